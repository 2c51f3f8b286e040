#include "entry/tag_commands.h"

#include "actions/guess_matcher.h"
#include "host/access.h"
#include "host/api/title_format.h"
#include "host/shared/text.h"

#include <algorithm>
#include <optional>

namespace quorvex {

using namespace vantaro;

namespace {

/// One form of command. Returns false when the command is not of that form.
using TagCommand = bool(const std::string& command, TrackHandle* track, TrackInfo& info, std::uint32_t index);

void remove_field(TrackInfo& info, const char* name) {
    const std::size_t field = info.find_field(name);
    if (field != no_field)
        info.remove_fields(MaskOne(field));
}

bool set_values(const std::string& command, TrackHandle*, TrackInfo& info, std::uint32_t) {
    const std::size_t equals = command.find('=');
    if (equals == std::string::npos)
        return false;
    const std::string name = command.substr(0, equals);
    std::string_view rest = std::string_view(command).substr(equals + 1);
    remove_field(info, name.c_str());
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\\'), rest.size());
        info.add_value(name.c_str(), std::string(rest.substr(0, end)).c_str());
        rest.remove_prefix(std::min(rest.find_first_not_of('\\', end), rest.size()));
    }
    return true;
}

bool auto_track_number(const std::string& command, TrackHandle*, TrackInfo& info, std::uint32_t index) {
    if (stricmp_utf8(command.c_str(), "autotracknumber") != 0)
        return false;
    info.set_field("TRACKNUMBER", std::to_string(std::uint64_t{index} + 1).c_str());
    return true;
}

/// The parts of "WORD:FIRST:SECOND"; the second part may hold more colons.
struct TwoParts {
    std::string first;
    std::string second;
};
std::optional<TwoParts> take_apart(const std::string& command, const char* word_and_colon) {
    if (stricmp_utf8_partial(command.c_str(), word_and_colon) != 0)
        return std::nullopt;
    const std::size_t first = command.find(':') + 1;
    const std::size_t colon = command.find(':', first);
    if (colon == std::string::npos)
        return std::nullopt;
    return TwoParts{command.substr(first, colon - first), command.substr(colon + 1)};
}

/// What the pattern gives for the tags as the commands before left them; nothing when it does not compile.
std::optional<std::string> format(const std::string& pattern, TrackHandle& track, const TrackInfo& info) {
    TitleFormatScript* script = nullptr;
    if (!required_service<TitleFormatCompiler>()->compile(script, pattern.c_str()))
        return std::nullopt;
    const auto compiled = Ref<TitleFormatScript>::adopt(script);
    return text_of([&](TextSink& out) { track.format_title_from(info, nullptr, out, *compiled, nullptr); });
}

bool format_field(const std::string& command, TrackHandle* track, TrackInfo& info, std::uint32_t) {
    const auto parts = take_apart(command, "format:");
    const auto text = parts ? format(parts->second, *track, info) : std::nullopt;
    if (!text)
        return false;
    remove_field(info, parts->first.c_str());
    if (!text->empty())
        info.add_value(parts->first.c_str(), text->c_str());
    return true;
}

bool guess(const std::string& command, TrackHandle* track, TrackInfo& info, std::uint32_t) {
    const auto parts = take_apart(command, "guess:");
    if (!parts)
        return false;
    guess_fields(info, format(parts->second, *track, info).value_or(""), parts->first);
    return true;
}

/// In the order in which they are tried.
constexpr TagCommand* tag_commands[] = {set_values, auto_track_number, format_field, guess};

} // namespace

bool run_tag_command(const std::string& command, TrackHandle* track, TrackInfo& info, std::uint32_t index) {
    return std::ranges::any_of(tag_commands,
                               [&](TagCommand* run) { return run(command, track, info, index); });
}

} // namespace quorvex
