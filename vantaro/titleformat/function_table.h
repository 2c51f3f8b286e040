// The functions of the language: one row each, and what a row's function sees of the run that calls it.
//
//     void put_left(Call& call) { ... call.out().append(...); }
//
// Any thread.
#pragma once

#include "vantaro/titleformat/text_buffer.h"
#include "vantaro/titleformat/title_format.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace vantaro::core {

class Run;
class Variables;
struct Mark;

/// One call of a function: its arguments, already evaluated, and where its text goes.
class Call {
public:
    Call(Run& run, std::span<const Mark> marks) : run_(run), marks_(marks) {}

    std::size_t count() const { return marks_.size(); }
    /// Argument number `index`, from 0; empty when it was not given. An argument that takes values has each
    /// of them followed by a NUL byte. Stays valid during the call.
    std::string_view text(std::size_t index) const;
    /// The argument as text, or `otherwise` when it was not given.
    std::string_view text(std::size_t index, std::string_view otherwise) const {
        return index < count() ? text(index) : otherwise;
    }
    /// The values of an argument that takes values. Throws TextTooLong when there are more than a million.
    std::vector<std::string_view> values(std::size_t index) const;
    /// The whole number that the argument is; nothing when it is none, or not within 64 bits.
    std::optional<std::int64_t> integer(std::size_t index) const;

    /// Where the function writes. One that yields values follows each by a NUL byte.
    TextBuffer& out();
    /// 1 or nothing.
    void put_truth(bool truth) {
        if (truth)
            out().append('1');
    }
    void put_integer(std::int64_t number);
    /// One value of those that the function yields.
    void put_value(std::string_view value) {
        out().append(value);
        out().append('\0');
    }

    const TrackInfo& info() const;
    Variables& variables();
    /// Tells the run that a field was found.
    void found();
    /// For work that the sizes of the arguments and of the result do not show, in bytes.
    /// Throws TooMuchWork.
    void charge(std::uint64_t work);
    /// The same for work that is done already; the next step throws.
    void spend(std::uint64_t work) noexcept;

private:
    Run& run_;
    std::span<const Mark> marks_;
};

/// Whether a condition of that text holds.
inline bool is_true(std::string_view text) {
    return !text.empty() && text != "0";
}

/// How calls of a function are compiled. All but plain ones evaluate only the arguments that they need.
enum class FunctionForm : std::uint8_t {
    plain,
    if_,
    if_text,
    if_defined,
    and_,
    or_,
    select,
    nothing,
    while_,
    map,
    each,
    format,
};

inline constexpr std::uint8_t any_number = 255;

struct FunctionRow {
    std::string_view name;
    std::uint8_t least; // how many arguments at least
    std::uint8_t most;  // and at most, or any_number
    FunctionForm form;
    std::uint32_t values; // bit n: argument n takes values; the highest bit: all from the 31st on as well
    bool yields_values;
    void (*function)(Call& call); // nullptr when the form is not plain
    std::string_view arguments;
    std::string_view description;

    bool takes_values(std::size_t argument) const {
        return (values >> (argument < 31 ? argument : 31) & 1) != 0;
    }
};

/// Sorted by name.
std::span<const FunctionRow> function_rows();

/// The row of that name, without regard to the case of ASCII letters; nullptr when there is none.
const FunctionRow* find_function(std::string_view name);

} // namespace vantaro::core
