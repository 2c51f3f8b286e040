#include "entry/tag_commands.h"

#include "host/shared/text.h"

#include <algorithm>

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

/// In the order in which they are tried.
constexpr TagCommand* tag_commands[] = {set_values, auto_track_number};

} // namespace

bool run_tag_command(const std::string& command, TrackHandle* track, TrackInfo& info, std::uint32_t index) {
    return std::ranges::any_of(tag_commands,
                               [&](TagCommand* run) { return run(command, track, info, index); });
}

} // namespace quorvex
