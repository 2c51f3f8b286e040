// How long the editor takes to open over many tracks, and how long it stands still at most while its script
// changes and the changes are counted.
//
//     editor_bench [tracks]
//
// Prints a line for each. Runs on the platform that needs no display, with a made-up configuration.

#include "bench/event_gaps.h"
#include "component/entry/client.h"
#include "script/action_registry.h"
#include "script/script_library.h"
#include "ui/editor_template.h"
#include "ui/widgets/editor_window.h"
#include "vantaro/application/terminal_host.h"

#include <QAbstractButton>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>

#include <cstdlib>
#include <string>

namespace quorvex {
namespace {

using namespace vantaro;
using bench::measure;

TrackList made_up_tracks(core::TrackTable& table, int count) {
    TrackList tracks;
    for (int i = 0; i < count; ++i) {
        core::Track& track =
            table.get("/music/" + std::to_string(i / 12) + '/' + std::to_string(i) + ".flac", 0);
        TrackInfoRecord record;
        record.set_field("TITLE", ("Song " + std::to_string(i)).c_str());
        record.set_field("ARTIST", ("Artist " + std::to_string(i % 900)).c_str());
        record.set_field("ALBUM", ("Album " + std::to_string(i / 12)).c_str());
        record.set_field("GENRE", "Folk");
        track.hold(make_service<core::HeldInfo>(record, FileStats{}, false));
        tracks.emplace_back(&track);
    }
    return tracks;
}

void store_script(const char* kind, const char* parameters) {
    const auto ignored = make_service<IgnoreCompletion>();
    Script script;
    for (const ActionMenuEntry& entry : action_menu())
        if (entry.name == kind)
            script.push_back(instantiate({entry.type->get_guid(), parameters}, *ignored));
    script_library().store_script(last_used_script, script);
}

int run(int count) {
    const QTemporaryDir folder;
    core::HostSetup setup;
    setup.config_dir = setup.state_dir = setup.component_dir = folder.path().toStdString();
    core::TerminalHost program(setup);
    core::Host& host = program.host();
    host.add_built_in(vantaro_get_interface, "vnt_quorvex.dll");
    host.load_components();
    const TrackList tracks = made_up_tracks(host.tracks(), count);
    store_script("Format value from other fields...", "TITLE\n$num(%list_index%,6). %title%");
    {
        QWidget owner;
        QDialog* editor = nullptr;
        measure(
            "opening, to the first previews",
            [&] {
                open_editor_window(tracks, static_cast<QWidget*>(&owner));
                editor = owner.findChild<QDialog*>();
            },
            [&] { return editor->isVisible(); });
        auto* table = editor->findChild<QTableView*>(QString::number(editor_control::track_list));
        auto* counted = editor->findChild<QLabel*>(QString::number(editor_control::change_count));
        measure(
            "counting what changes", [] {}, [&] { return counted->toolTip().endsWith(" change"); });
        int page = 0;
        measure(
            "scrolling, 300 places", [] {},
            [&] {
                table->verticalScrollBar()->setValue(static_cast<int>(page * 7919LL % count));
                return ++page == 300;
            });
        measure(
            "removing the action",
            [&] {
                auto* list = editor->findChild<QListWidget*>(QString::number(editor_control::action_list));
                list->setCurrentRow(0);
                editor->findChild<QAbstractButton*>(QString::number(editor_control::remove))->click();
            },
            [] { return true; });
    }
    host.close();
    return 0;
}

} // namespace
} // namespace quorvex

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication qt(argc, argv);
    constexpr int usual_count = 1'000'000;
    return quorvex::run(argc > 1 ? std::max(1, std::atoi(argv[1])) : usual_count);
}
