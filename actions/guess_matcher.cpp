#include "actions/guess_matcher.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace quorvex {

namespace {

constexpr std::string_view white_space = " \t";
constexpr std::size_t nowhere = std::string_view::npos;

bool is_white_space(char c) {
    return white_space.find(c) != nowhere;
}

/// A text with every run of white space as one blank: literals match it byte by byte.
class Collapsed {
public:
    explicit Collapsed(std::string_view original) : original_(original) {
        text_.reserve(original.size());
        origin_.reserve(original.size() + 1);
        for (std::size_t i = 0; i < original.size(); ++i) {
            const bool blank = is_white_space(original[i]);
            if (blank && !text_.empty() && text_.back() == ' ')
                continue;
            text_ += blank ? ' ' : original[i];
            origin_.push_back(i);
        }
        origin_.push_back(original.size());
    }

    std::size_t size() const { return text_.size(); }
    bool starts_with(const Collapsed& literal) const { return text_.starts_with(literal.text_); }
    /// The first place from `from` on where the literal stands, or nowhere. In linear time, which
    /// std::string's own search does not promise.
    std::size_t find(const Collapsed& literal, std::size_t from) const {
        const void* found =
            ::memmem(text_.data() + from, text_.size() - from, literal.text_.data(), literal.text_.size());
        return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text_.data()) : nowhere;
    }
    /// What stands in the original from one place to another.
    std::string_view original(std::size_t begin, std::size_t end) const {
        return original_.substr(origin_[begin], origin_[end] - origin_[begin]);
    }

private:
    std::string_view original_;
    std::string text_;
    std::vector<std::size_t> origin_; // of each byte of text_, and of its end
};

void set_guessed(vantaro::TrackInfo& target, std::string_view name, std::string_view value) {
    if (name.empty() || value.empty())
        return;
    value = value.substr(0, value.find_last_not_of(white_space) + 1);
    target.set_field(std::string(name).c_str(), std::string(value).c_str());
}

} // namespace

void guess_fields(vantaro::TrackInfo& target, std::string_view subject_text, std::string_view pattern) {
    const Collapsed subject(subject_text);
    std::size_t cursor = 0;
    const auto take_literal = [&] {
        Collapsed literal(pattern.substr(0, pattern.find('%')));
        pattern.remove_prefix(std::min(pattern.find('%'), pattern.size()));
        return literal;
    };
    if (const Collapsed leading = take_literal(); subject.starts_with(leading))
        cursor = leading.size();

    while (!pattern.empty() && cursor < subject.size()) {
        const std::size_t name_end = pattern.find('%', 1);
        if (name_end == nowhere)
            return;
        const std::string_view name = pattern.substr(1, name_end - 1);
        pattern.remove_prefix(name_end + 1);
        const Collapsed literal = take_literal();

        const std::size_t found = literal.size() == 0 ? nowhere : subject.find(literal, cursor);
        const std::size_t value_end = found == nowhere ? subject.size() : found;
        set_guessed(target, name, subject.original(cursor, value_end));
        cursor = found == nowhere ? subject.size() : found + literal.size();
    }
}

} // namespace quorvex
