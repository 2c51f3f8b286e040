#include "entry/command_line.h"

#include "entry/tag_commands.h"
#include "host/access.h"
#include "host/api/tag_io.h"
#include "host/filesystem_access.h"
#include "host/shared/text.h"

#include <string_view>
#include <unordered_map>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr const char* help_title = "Command-line Help (Quorvex)";
constexpr std::string_view help_text =
    R"(Usage:

/tag:help - displays this message

/tag:<command1>[;<command2>;<command3>...] <file1> [<file2> <file3>...]

Commands:

<NAME>=<VALUE>
    Sets <NAME> field to <VALUE>, e.g. "/tag:title=test <file>".
    You can erase particular field by specifying empty value, e.g. "/tag:comment= <file>".
    You can also specify multiple values by separating them with \ character, e.g. "/tag:artist=name1\name2 <file>".
AUTOTRACKNUMBER
    Sets TRACKNUMBER field of multiple files according to their order in commandline.
    E.g. "/tag:AUTOTRACKNUMBER <file1> <file2> <file3>" will assign TRACKNUMBER=1 to <file1>, 2 to <file2> and 3 to <file3>.
FORMAT:<FIELD>:<SPEC>
    Formats <FIELD> using <SPEC>; see title formatting manual for more info how to use it.
    E.g. "/tag:FORMAT:COMMENT:"%ARTIST% - %TITLE%" <file>".
GUESS:<PATTERN>:<SPEC>
    Guesses field values using <PATTERN>, according to <SPEC>.
    To perform "guess values from filename" action, use "/tag:GUESS:<PATTERN>:%_FILENAME% <file>".
    E.g. "/tag:GUESS:"%TRACKNUMBER%. %TITLE%":%_FILENAME% <file>".
)";

void show_help() {
    required_service<PopupMessage>()->show(help_text.data(), help_text.size(), help_title,
                                           popup_icon::information);
}

/// Splits at every run of semicolons.
std::vector<std::string> split_commands(std::string_view text) {
    std::vector<std::string> commands;
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(';'), text.size()));
        if (text.empty())
            return commands;
        commands.emplace_back(text.substr(0, text.find(';')));
        text.remove_prefix(commands.back().size());
    }
}

class TagCommandFilter final : public HeapService<TrackFilter> {
public:
    TagCommandFilter(std::vector<std::string> commands, const TrackList& files)
        : commands_(std::move(commands)) {
        for (std::uint32_t i = 0; i < files.size(); ++i)
            indexes_.emplace(files[i].get(), i); // a file named twice keeps its first position
    }

    bool apply(TrackHandle* track, const FileStats&, TrackInfo& info) override {
        const auto found = indexes_.find(track);
        if (found == indexes_.end())
            return false;
        for (const std::string& command : commands_)
            if (!run_tag_command(command, track, info, found->second)) {
                print_to_console("Unknown command: \"" + command + "\", see /tag:help for more info.");
                note_undone_work("");
            }
        return true;
    }

private:
    const std::vector<std::string> commands_;
    std::unordered_map<const TrackHandle*, std::uint32_t> indexes_;
};

class Collector final : public TrackSink {
public:
    void add(TrackHandle* track) override { tracks.emplace_back(track); }
    TrackList tracks;
};

} // namespace

CommandLineHandler::Result TagCommandLine::on_token(const char* text) {
    files_.clear();
    commands_.clear();
    if (stricmp_utf8(text, "/help") == 0 || stricmp_utf8(text, "/?") == 0) {
        show_help();
        return Result::not_taken;
    }
    if (stricmp_utf8_partial(text, "/tag:") != 0)
        return Result::not_taken;
    const std::string_view argument = text;
    const std::string_view rest = argument.substr(argument.find(':') + 1);
    if (stricmp_utf8(rest.data(), "help") == 0) {
        show_help();
        return Result::not_taken;
    }
    commands_ = split_commands(rest);
    return Result::taken_wants_files;
}

void TagCommandLine::on_file(const char* location) {
    try {
        NeverAbort abort;
        Collector found;
        required_service<HostTagIO>()->resolve_location(location, found, abort);
        for (const Ref<TrackHandle>& track : found.tracks)
            on_track(track.get());
    } catch (const std::exception& error) {
        print_to_console(std::string("Path evaluation failure: ") + error.what());
    }
}

void TagCommandLine::on_track(TrackHandle* track) {
    files_.emplace_back(track);
}

void TagCommandLine::on_files_done() {
    const TrackList files = std::exchange(files_, {});
    const std::vector<std::string> commands = std::exchange(commands_, {});
    if (commands.empty() && !files.empty())
        note_undone_work("\"/tag:\" names no command for the files after it, see /tag:help for more info.");
    if (commands.empty() || files.empty())
        return;
    std::vector<TrackHandle*> handles;
    handles.reserve(files.size());
    for (const Ref<TrackHandle>& file : files)
        handles.push_back(file.get());
    const auto tag_io = required_service<HostTagIO>();
    service_extension<HostTagIOUpdate>(*tag_io)->update_async(
        handles.data(), handles.size(), make_service<TagCommandFilter>(commands, files).get(),
        host()->main_window(), 0, nullptr);
}

} // namespace quorvex
