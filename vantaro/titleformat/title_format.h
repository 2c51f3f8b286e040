// Title formatting: a pattern is compiled once and then run for any number of tracks. What patterns mean
// stands in docs/title-formatting.md.
//
//     auto compiled = compile_title_format("%artist% - %title%");
//     if (const auto* error = std::get_if<TitleFormatError>(&compiled))
//         complain(error->text, error->position);
//     else
//         std::get<Ref<TitleFormatProgram>>(compiled)->run(track, info, nullptr, out, nullptr);
//
// No pattern and no value takes the process down: the depth of a pattern, the size of a text, and the work of
// a run are bounded.
//
// Any thread. A compiled program is immutable and may run on several threads at once; the track, the tags,
// the hook and the filter of a run belong to that run. Hooks and filters may run other programs.
#pragma once

#include "host/api/title_format.h"
#include "vantaro/tracks/track_table.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace vantaro::core {

/// Why a pattern does not compile.
struct TitleFormatError {
    /// A sentence for people, without the position.
    std::string text;
    /// Where in the pattern, in bytes: what is not closed, what is called wrongly, or what should not be
    /// there.
    std::size_t position;

    friend bool operator==(const TitleFormatError&, const TitleFormatError&) = default;
};

/// Functions, sections and parentheses may stand in each other this deep.
inline constexpr std::size_t title_format_depth = 200;
/// No text of a run grows beyond this, in bytes: neither its result, nor what stands in between, nor its
/// variables together.
inline constexpr std::size_t title_format_text_limit = std::size_t{16} << 20;
/// What the steps of a run may cost together: 16 for each step, and 1 for each byte that it reads or writes.
inline constexpr std::uint64_t title_format_work_limit = std::uint64_t{1} << 27;

/// The whole result of a run that a bound has ended.
inline constexpr std::string_view title_format_text_too_long = "[TEXT TOO LONG]";
inline constexpr std::string_view title_format_too_much_work = "[TOO MANY STEPS]";

/// Compiles a pattern. A function that is not known is no error: a hook may know it.
std::variant<Ref<TitleFormatProgram>, TitleFormatError> compile_title_format(std::string_view pattern);

/// The compiler that components reach.
class TitleFormatting final : public StaticService<TitleFormatCompiler> {
public:
    bool compile(TitleFormatScript*& out, const char* pattern) override;
};

class TitleFormattingDiagnosis final : public StaticService<TitleFormatDiagnosis> {
public:
    bool explain(const char* pattern, TextSink& text, std::size_t& position) override;
};

/// One function of the language, as documentation and completion show it.
struct TitleFormatFunction {
    std::string_view name;
    /// As people write them, for instance "text,n[,char]".
    std::string_view arguments;
    /// One line: what it yields.
    std::string_view description;
};

/// All functions, sorted by name. They live as long as the process.
std::span<const TitleFormatFunction> title_format_functions();

} // namespace vantaro::core
