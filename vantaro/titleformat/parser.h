// Patterns as trees: the syntax and nothing but the syntax.
//
//     auto parsed = parse_pattern("[%album% - ]%title%");
//
// Grammar, on bytes:
//
//     pattern   = part*
//     part      = field | function | section | quoted | comment | layout | character
//     field     = "%" name "%"
//     function  = "$" name "(" [ pattern ("," pattern)* ] ")"
//     section   = "[" pattern "]"
//     quoted    = "'" (any but "'" | "''")* "'"
//     comment   = "//" (any but CR, LF)*                  only at the start of a line or behind layout
//     layout    = (CR | LF) (SP | HT)*                    yields nothing
//     character = "%%" | "$$" | "''" | any other byte     the doubled ones are one
//
// Between the parentheses of a function, parentheses that are not quoted pair up, and what stands in a pair,
// commas included, is text.
#pragma once

#include "vantaro/titleformat/title_format.h"

#include <cstdint>
#include <variant>
#include <vector>

namespace vantaro::core {

inline constexpr std::uint32_t no_node = ~std::uint32_t{0};

struct PatternNode {
    enum class Kind : std::uint8_t {
        literal,  // the text
        field,    // its name is the text
        function, // its name is the text, its children are sequences: the arguments
        section,  // its children are the parts
        sequence, // its children are the parts
    };
    Kind kind;
    std::uint32_t position; // in the pattern
    std::uint32_t start;    // of the text, in the texts
    std::uint32_t length;
    std::uint32_t first_child;
    std::uint32_t next_sibling;
};

struct ParsedPattern {
    std::vector<PatternNode> nodes; // the first one is a sequence: the whole
    std::string texts;

    std::string_view text(const PatternNode& node) const {
        return std::string_view(texts).substr(node.start, node.length);
    }
};

std::variant<ParsedPattern, TitleFormatError> parse_pattern(std::string_view pattern);

} // namespace vantaro::core
