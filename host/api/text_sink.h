// How a text comes back across the boundary: the callee sets it, the caller owns where it lands.
//
//     StringSink name;
//     action_type->get_name(name);
//     menu.insert(name.text());
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace vantaro {

class TextSink {
public:
    /// Replaces whatever was set before by `length` bytes of UTF-8. The bytes are copied during the call.
    virtual void set(const char* text, std::size_t length) = 0;

protected:
    ~TextSink() = default;
};

inline void set_text(TextSink& sink, std::string_view text) {
    sink.set(text.data(), text.size());
}

/// Keeps the text in a std::string.
class StringSink final : public TextSink {
public:
    void set(const char* text, std::size_t length) override { text_.assign(text, length); }

    const std::string& text() const { return text_; }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

/// What an operation of the form `void get_x(TextSink&)` sets:
///     std::string name = text_of([&](TextSink& out) { type->get_name(out); });
template <class Get>
std::string text_of(Get&& get) {
    StringSink sink;
    get(sink);
    return sink.take();
}

} // namespace vantaro
