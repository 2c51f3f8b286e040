// What a pattern is compiled to: instructions in a row, with their texts and fields beside them.
//
// A run has one text to which everything is appended, and a stack of marks, places in that text. An
// instruction that takes a text takes what stands behind the topmost mark, and pops that mark.
//
// Several values in one text: each is followed by a NUL byte, which no value can hold.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core {

enum class Operation : std::uint8_t {
    literal,         // appends literals [first, first + second)
    field,           // appends field `first`, its values joined
    field_values,    // the same, as values
    named_field,     // takes a text: appends the field of that name, its values joined
    mark,            // pushes a mark
    end_section,     // takes a text: drops it when no field was found since the mark
    end_value,       // takes a text: makes it one value, or none when it is empty
    join_values,     // takes values: makes them one text
    drop,            // takes a text
    jump,            // to instruction `first`
    jump_if_false,   // takes a text; to `first` when it is empty or 0
    jump_if_true,    // takes a text; to `first` when it is neither
    jump_if_text,    // pops the mark; to `first` when the text behind it is not empty
    jump_if_missing, // pops the mark; drops the text and jumps to `first` when no field was found since then
    select,          // takes a number n: skips n - 1 of the next `first` instructions, or all of them
    format,          // takes a text: compiles it and runs it here
    begin_loop,      // begins a loop without values
    begin_values,    // takes values: begins a loop over them
    next_round,      // counts a round; to `first` after the last one
    next_value,      // steps to the next value; to `first` behind the last one
    end_loop,        //
    call,            // takes `second` texts: calls function `first` of the function table
    call_unknown,    // the same, by the name literals [first, NUL)
};

struct Instruction {
    Operation operation;
    std::uint32_t first = 0;
    std::uint32_t second = 0;
};

/// The fields that are more than a look-up by name; `fields.h` has their names.
enum class BuiltInField : std::uint8_t;

struct FieldReference {
    BuiltInField built_in;
    std::uint32_t name; // in the literals, NUL-terminated
    std::uint32_t length;
};

struct Program {
    std::vector<Instruction> instructions;
    std::vector<FieldReference> fields;
    std::string literals;
    /// How many instructions push a mark.
    std::size_t mark_count = 0;

    std::string_view text(std::uint32_t start, std::uint32_t length) const {
        return std::string_view(literals).substr(start, length);
    }
};

} // namespace vantaro::core
