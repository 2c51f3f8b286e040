#include "vantaro/titleformat/parser.h"

#include <limits>
#include <optional>

namespace vantaro::core {

namespace {

using Kind = PatternNode::Kind;

/// Leaves the parser; turned into the value that callers see.
struct Failure {
    TitleFormatError error;
};

bool is_name_character(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool is_line_break(char c) {
    return c == '\n' || c == '\r';
}

class Parser {
public:
    explicit Parser(std::string_view pattern) : pattern_(pattern) {}

    ParsedPattern parse() {
        const std::uint32_t root = add_node(Kind::sequence, 0);
        parse_parts(root, Surroundings::none, 0);
        return std::move(result_);
    }

private:
    /// What a sequence of parts stands in: it says which characters end the sequence.
    enum class Surroundings : std::uint8_t { none, section, argument };

    void parse_parts(std::uint32_t parent, Surroundings surroundings, std::size_t depth) {
        // Commas and closing parentheses that belong to these parentheses are text.
        std::vector<std::size_t> parentheses;
        std::uint32_t last = no_node;
        while (at_ < pattern_.size()) {
            const char c = pattern_[at_];
            const bool is_argument = surroundings == Surroundings::argument;
            if (is_argument && parentheses.empty() && (c == ',' || c == ')'))
                return;
            if (c == ']') {
                if (!parentheses.empty())
                    fail("This parenthesis is not closed inside its section", parentheses.back());
                if (surroundings == Surroundings::section)
                    return;
                fail("This ] closes nothing", at_);
            }
            if (is_argument && c == '(') {
                if (depth + parentheses.size() >= title_format_depth)
                    fail_too_deep();
                parentheses.push_back(at_);
            } else if (is_argument && c == ')') {
                parentheses.pop_back();
            }
            parse_part(parent, last, depth);
        }
        if (!parentheses.empty())
            fail("This parenthesis is not closed", parentheses.back());
    }

    void parse_part(std::uint32_t parent, std::uint32_t& last, std::size_t depth) {
        const std::size_t start = at_;
        const char c = pattern_[at_];
        if (is_line_break(c))
            return skip_layout();
        if (pattern_.substr(at_).starts_with("//") && (at_ == 0 || at_ == line_start_))
            return skip_comment();
        switch (c) {
        case '%':
            if (take_doubled('%', parent, last))
                return;
            return append_child(parent, last, parse_field(start));
        case '$':
            if (take_doubled('$', parent, last))
                return;
            if (at_ + 1 == pattern_.size() || !is_name_character(pattern_[at_ + 1])
                || (pattern_[at_ + 1] >= '0' && pattern_[at_ + 1] <= '9'))
                break;
            return append_child(parent, last, parse_function(start, depth));
        case '[':
            return append_child(parent, last, parse_section(start, depth));
        case '\'':
            if (take_doubled('\'', parent, last))
                return;
            return parse_quoted(start, parent, last);
        default:
            break;
        }
        ++at_;
        append_literal(parent, last, start, pattern_.substr(start, 1));
    }

    void skip_layout() {
        while (at_ < pattern_.size()
               && (is_line_break(pattern_[at_]) || pattern_[at_] == ' ' || pattern_[at_] == '\t'))
            ++at_;
        line_start_ = at_;
    }

    void skip_comment() {
        while (at_ < pattern_.size() && !is_line_break(pattern_[at_]))
            ++at_;
    }

    bool take_doubled(char c, std::uint32_t parent, std::uint32_t& last) {
        if (at_ + 1 == pattern_.size() || pattern_[at_ + 1] != c)
            return false;
        append_literal(parent, last, at_, pattern_.substr(at_, 1));
        at_ += 2;
        return true;
    }

    std::uint32_t parse_field(std::size_t start) {
        const std::size_t end = pattern_.find('%', start + 1);
        if (end == std::string_view::npos)
            fail("This % has no second one behind the name of the field", start);
        const std::uint32_t node = add_node(Kind::field, start);
        set_text(node, pattern_.substr(start + 1, end - start - 1));
        at_ = end + 1;
        return node;
    }

    std::uint32_t parse_function(std::size_t start, std::size_t depth) {
        do
            ++at_;
        while (at_ < pattern_.size() && is_name_character(pattern_[at_]));
        const std::string_view name = pattern_.substr(start + 1, at_ - start - 1);
        if (at_ == pattern_.size() || pattern_[at_] != '(')
            fail("There is no ( behind the function $" + std::string(name.substr(0, 40)), start);
        if (depth >= title_format_depth)
            fail_too_deep();
        const std::uint32_t node = add_node(Kind::function, start);
        set_text(node, name);
        ++at_;
        if (at_ < pattern_.size() && pattern_[at_] == ')') {
            ++at_;
            return node;
        }
        for (std::uint32_t last = no_node;;) {
            const std::uint32_t argument = add_node(Kind::sequence, at_);
            append_child(node, last, argument);
            parse_parts(argument, Surroundings::argument, depth + 1);
            if (at_ == pattern_.size())
                fail("The parenthesis of $" + std::string(name.substr(0, 40)) + " is not closed", start);
            if (pattern_[at_++] == ')')
                return node;
        }
    }

    std::uint32_t parse_section(std::size_t start, std::size_t depth) {
        if (depth >= title_format_depth)
            fail_too_deep();
        const std::uint32_t node = add_node(Kind::section, start);
        ++at_;
        parse_parts(node, Surroundings::section, depth + 1);
        if (at_ == pattern_.size())
            fail("This [ is not closed", start);
        ++at_;
        return node;
    }

    void parse_quoted(std::size_t start, std::uint32_t parent, std::uint32_t& last) {
        for (++at_;;) {
            const std::size_t end = pattern_.find('\'', at_);
            if (end == std::string_view::npos)
                fail("This quote is not closed", start);
            append_literal(parent, last, start, pattern_.substr(at_, end - at_));
            at_ = end + 1;
            if (at_ == pattern_.size() || pattern_[at_] != '\'')
                return;
            append_literal(parent, last, start, "'");
            ++at_;
        }
    }

    std::uint32_t add_node(Kind kind, std::size_t position) {
        result_.nodes.push_back({kind, static_cast<std::uint32_t>(position), 0, 0, no_node, no_node});
        return static_cast<std::uint32_t>(result_.nodes.size() - 1);
    }

    void set_text(std::uint32_t node, std::string_view text) {
        result_.nodes[node].start = static_cast<std::uint32_t>(result_.texts.size());
        result_.nodes[node].length = static_cast<std::uint32_t>(text.size());
        result_.texts.append(text);
    }

    void append_child(std::uint32_t parent, std::uint32_t& last, std::uint32_t child) {
        (last == no_node ? result_.nodes[parent].first_child : result_.nodes[last].next_sibling) = child;
        last = child;
    }

    /// Texts that follow each other become one node.
    void append_literal(std::uint32_t parent, std::uint32_t& last, std::size_t position,
                        std::string_view text) {
        if (last == no_node || result_.nodes[last].kind != Kind::literal) {
            append_child(parent, last, add_node(Kind::literal, position));
            set_text(last, {});
        }
        result_.texts.append(text);
        result_.nodes[last].length += static_cast<std::uint32_t>(text.size());
    }

    [[noreturn]] void fail_too_deep() {
        fail("Functions, sections and parentheses stand in each other more than "
                 + std::to_string(title_format_depth) + " deep",
             at_);
    }

    [[noreturn]] static void fail(std::string text, std::size_t position) {
        throw Failure{{std::move(text), position}};
    }

    const std::string_view pattern_;
    std::size_t at_ = 0;
    std::size_t line_start_ = 0; // where a comment may begin
    ParsedPattern result_;
};

} // namespace

std::variant<ParsedPattern, TitleFormatError> parse_pattern(std::string_view pattern) {
    // Positions are kept in 32 bits.
    if (pattern.size() > title_format_text_limit)
        return TitleFormatError{"The pattern is longer than " + std::to_string(title_format_text_limit)
                                    + " bytes",
                                title_format_text_limit};
    if (const std::size_t zero = pattern.find('\0'); zero != std::string_view::npos)
        return TitleFormatError{"The pattern holds a zero byte", zero};
    try {
        return Parser(pattern).parse();
    } catch (const Failure& failure) {
        return failure.error;
    }
}

} // namespace vantaro::core
