#include "quorvex/output.h"

#include "vantaro/terminal/standard_output.h"

#include <array>
#include <ctime>

namespace quorvex::command {

using namespace vantaro;

Json track_object(const TrackHandle& track) {
    return {{"path", track.path()}, {"subsong", track.subsong()}};
}

Json fields_object(const TrackInfoRecord& info) {
    Json object = Json::object();
    for (const TrackField& field : info.fields())
        object[field.name] = field.values;
    return object;
}

Json technical_object(const TrackInfoRecord& info) {
    Json object = Json::object();
    for (const TechnicalField& field : info.technical_fields())
        object[field.name] = field.value;
    object["length"] = info.length();
    return object;
}

void print_json(const Json& object) {
    print_line(core::printable_json(object.dump(-1, ' ', false, Json::error_handler_t::replace)));
}

void print_line(std::string_view line) {
    core::print_output(std::string(line) + '\n');
}

std::string local_time(std::int64_t nanoseconds) {
    constexpr std::int64_t second = 1'000'000'000;
    const std::time_t time = nanoseconds / second;
    std::tm parts{};
    ::localtime_r(&time, &parts);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

void hint_at_undo(vantaro::core::Terminal& terminal, std::uint64_t run) {
    const std::string number = std::to_string(run);
    if (run != 0)
        terminal.hint("This was run " + number + "; \"quorvex undo " + number + "\" takes it back.");
}

} // namespace quorvex::command
