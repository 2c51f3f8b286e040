// Shows the settings dialog of every kind of action, to be looked at and tried.
//
//     dialog_gallery TRACK                       opens them all
//     dialog_gallery TRACK --save DIR [--dark]   saves a picture of each, as it is when it has just been
//     opened
//
// TRACK is the file that patterns are tried on. Stored settings are left alone.

#include "actions/parameter_text.h"
#include "actions/setting_table.h"
#include "component/entry/client.h"
#include "script/action_registry.h"
#include "script/script_library.h"
#include "tests/support/failures.h"
#include "tests/support/temporary_folder.h"
#include "ui/widgets/balloon.h"
#include "ui/widgets/editor_window.h"
#include "ui/widgets/pattern_tip.h"
#include "ui/widgets/settings_window.h"
#include "vantaro/application/terminal_host.h"

#include <QApplication>
#include <QDialog>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <iostream>

namespace quorvex {
namespace {

using namespace vantaro;

struct Example {
    const char* name;
    const char* parameters;
};

constexpr Example examples[] = {
    {"Add value...", "GENRE\nFolk"},
    {"Auto track number...", "%album%"},
    {"Copy values between fields...", "ARTIST\nPERFORMER"},
    {"Format value from other fields...", "TITLE\n$num(%tracknumber%,2). %artist% - %title%"},
    {"Guess values from file names...", "%tracknumber% - %title%"},
    {"Guess values from other fields...", "%a% - %b%\n%artist% - %title%"},
    {"Input data (one line per track)...",
     "%tracknumber%. %title%\n1. Morning Tide\r\n2. Gulls over Slate\r\n3. Rope and Tar"},
    {"Remove all fields except for...", "artist;title;album;tracknumber;genre;disc;date"},
    {"Remove field...", "COMMENT"},
    {"Remove values...", "GENRE\nPop;Rock\nn"},
    {"Replace value...", "GENRE\nrock\nRock & Roll\nc"},
    {"Set value...", "COMMENT\nRecorded at the old pier."},
    {"Split field by separator...", "ARTIST\n;"},
};

class Desk final : public QWidget, public PatternSampleSource {
public:
    explicit Desk(const PatternSample& sample) : sample_(sample) {}
    const PatternSample* pattern_sample(ServiceBase&) override { return &sample_; }

private:
    const PatternSample& sample_;
};

class FirstTags final : public core::UpdateWatcher {
public:
    explicit FirstTags(TrackInfoRecord& into) : into_(into) {}
    void on_track(const core::TrackOutcome& outcome, std::size_t done, std::size_t) override {
        if (done == 1)
            into_ = TrackInfoRecord(outcome.before);
    }
    void on_end(const core::UpdateReport&) override {}

private:
    TrackInfoRecord& into_;
};

class Tracks final : public TrackSink {
public:
    void add(TrackHandle* track) override { all.push_back(static_cast<core::Track*>(track)); }
    std::vector<core::Track*> all;
};

/// What the editor opens with.
void store_script() {
    const auto ignored = make_service<IgnoreCompletion>();
    Script script;
    for (const auto& [name, parameters] :
         {Example{"Set value...", "ALBUMARTIST\nTidewright Ensemble"},
          Example{"Format value from other fields...", "TITLE\n$num(%tracknumber%,2). %title%"},
          Example{"Remove field...", "COMMENT"}, Example{"Auto track number...", "%album%"}})
        for (const ActionMenuEntry& entry : action_menu())
            if (entry.name == name)
                script.push_back(instantiate({entry.type->get_guid(), parameters}, *ignored));
    script_library().store_script(last_used_script, script);
}

void use_dark_colours() {
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x30, 0x32, 0x36));
    dark.setColor(QPalette::WindowText, QColor(0xEE, 0xEE, 0xEE));
    dark.setColor(QPalette::Base, QColor(0x22, 0x24, 0x27));
    dark.setColor(QPalette::AlternateBase, QColor(0x2A, 0x2C, 0x30));
    dark.setColor(QPalette::Text, QColor(0xEE, 0xEE, 0xEE));
    dark.setColor(QPalette::Button, QColor(0x3A, 0x3C, 0x41));
    dark.setColor(QPalette::ButtonText, QColor(0xEE, 0xEE, 0xEE));
    dark.setColor(QPalette::ToolTipBase, QColor(0x4A, 0x4D, 0x53));
    dark.setColor(QPalette::ToolTipText, QColor(0xF4, 0xF4, 0xF4));
    dark.setColor(QPalette::Highlight, QColor(0x2F, 0x6F, 0xB8));
    QApplication::setPalette(dark);
    QApplication::setPalette(dark, "QTipLabel");
}

/// The window with the balloons that belong to it.
QImage picture(QWidget& window) {
    QRect all(window.mapToGlobal(QPoint(0, 0)), window.size());
    std::vector<Balloon*> balloons;
    for (QWidget* child : window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        if (auto* balloon = dynamic_cast<Balloon*>(child); balloon && balloon->isVisible())
            balloons.push_back(balloon);
    for (const Balloon* balloon : balloons)
        all |= balloon->geometry();
    const qreal scale = window.devicePixelRatioF();
    QImage image(all.size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(QApplication::palette().color(QPalette::Mid));
    QPainter painter(&image);
    painter.drawPixmap(window.mapToGlobal(QPoint(0, 0)) - all.topLeft(), window.grab());
    for (Balloon* balloon : balloons)
        painter.drawPixmap(balloon->geometry().topLeft() - all.topLeft(), balloon->grab());
    return image;
}

int run(QApplication& application) {
    const QStringList arguments = QApplication::arguments();
    const qsizetype save = arguments.indexOf("--save");
    if (arguments.size() < 2 || save + 1 == arguments.size()) {
        std::cerr << "dialog_gallery FOLDER [--save DIR] [--dark]\n";
        return 2;
    }
    if (arguments.contains("--dark"))
        use_dark_colours();

    const test::TemporaryFolder stored;
    core::HostSetup setup;
    setup.config_dir = stored.path() + "/config";
    setup.state_dir = stored.path() + "/state";
    setup.component_dir = stored.path();
    core::TerminalHost program(setup);
    core::Host& host = program.host();
    host.add_built_in(vantaro_get_interface, "vnt_quorvex.dll");
    host.load_components();
    set_settings_dialog_opener(open_settings_window);

    Tracks tracks;
    host.tag_io().resolve_location(arguments[1].toStdString().c_str(), tracks, test::run_on);
    PatternSample sample{Ref<TrackHandle>(tracks.all.front()), {}, 0, 10};
    host.tag_io().read_tags_of(tracks.all, core::TagIO::Hold::yes, std::make_unique<FirstTags>(sample.info));
    host.wait_until_idle();
    TrackList list;
    for (core::Track* track : tracks.all)
        list.emplace_back(track);
    {
        Desk desk(sample);
        const auto done = make_service<IgnoreCompletion>();
        store_script();
        open_editor_window(list, static_cast<QWidget*>(&desk));
        for (const ActionMenuEntry& entry : action_menu()) {
            for (const Example& example : examples) {
                if (entry.name != example.name)
                    continue;
                const Ref<Action> action = instantiate({entry.type->get_guid(), example.parameters}, *done);
                action->create_settings_dialog(&desk, done.get());
            }
        }
        if (save < 0)
            application.exec();
        for (QDialog* dialog : desk.findChildren<QDialog*>()) {
            if (save < 0)
                break;
            if (dialog->windowTitle() == "Quorvex") // as people have it, with room for previews
                dialog->resize(dialog->width() * 3 / 2, dialog->height());
            dialog->activateWindow();
            QTest::qWait(350);
            const QString name =
                dialog->windowTitle().remove(QRegularExpression("[^A-Za-z ]")).replace(' ', '-');
            if (!picture(*dialog).save(arguments[save + 1] + '/' + name.toLower() + ".png"))
                std::cerr << "cannot save " << name.toStdString() << '\n';
        }
    }
    host.close();
    return 0;
}

} // namespace
} // namespace quorvex

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    try {
        return quorvex::run(application);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 2;
    }
}
