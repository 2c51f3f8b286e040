// A text that grows to the limit of a run and not beyond.
//
//     TextBuffer out(title_format_text_limit);
//     out.append(text);          // throws TextTooLong
//
// One thread.
#pragma once

#include <unicode/utf8.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace vantaro::core {

/// A bound of a run is reached: only the run itself catches these.
struct TextTooLong {};
struct TooMuchWork {};

class TextBuffer {
public:
    explicit TextBuffer(std::size_t limit) : limit_(limit) {}

    /// `text` does not lie in this buffer. Throws TextTooLong.
    void append(std::string_view text) {
        require_room(text.size());
        text_.append(text);
    }
    void append(char c) { append(1, c); }
    /// Throws TextTooLong.
    void append(std::size_t count, char c) {
        require_room(count);
        text_.append(count, c);
    }
    /// Throws TextTooLong, before anything is written.
    void append_copies(std::size_t count, std::string_view text) {
        if (!text.empty() && count > (limit_ - text_.size()) / text.size())
            throw TextTooLong();
        if (text.empty())
            return;
        text_.reserve(text_.size() + count * text.size());
        for (std::size_t i = 0; i < count; ++i)
            text_.append(text);
    }
    /// Requires: a Unicode scalar value. Throws TextTooLong.
    void append_code_point(std::int32_t code_point) {
        char bytes[U8_MAX_LENGTH];
        std::int32_t length = 0;
        // The macro's own arithmetic mixes the signs of bytes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"
        U8_APPEND_UNSAFE(bytes, length, code_point);
#pragma GCC diagnostic pop
        append(std::string_view(bytes, static_cast<std::size_t>(length)));
    }

    std::string_view view() const {
        return text_;
    }
    std::string_view from(std::size_t position) const {
        return view().substr(position);
    }
    std::size_t size() const {
        return text_.size();
    }
    void cut(std::size_t size) {
        text_.resize(size);
    }
    void clear() {
        text_.clear();
    }
    void reserve(std::size_t size) {
        text_.reserve(size);
    }

private:
    void require_room(std::size_t size) const {
        if (size > limit_ - text_.size())
            throw TextTooLong();
    }

    const std::size_t limit_;
    std::string text_;
};

} // namespace vantaro::core
