#include "ui/widgets/editor_window.h"

#include "component/configuration.h"
#include "engine/run.h"
#include "host/api/exceptions.h"
#include "host/exception_filter.h"
#include "host/shared/failure.h"
#include "ui/editor_template.h"
#include "ui/widgets/action_commands.h"
#include "ui/widgets/add_menu.h"
#include "ui/widgets/anchor_resizer.h"
#include "ui/widgets/dialog_controls.h"
#include "ui/widgets/dialog_services.h"
#include "ui/widgets/editor_preview.h"
#include "ui/widgets/help.h"
#include "ui/widgets/pattern_tip.h"
#include "ui/widgets/placement.h"
#include "ui/widgets/script_commands.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDialog>
#include <QMimeData>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <QTimer>

#include <cerrno>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr Qt::WindowFlags window_flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                                         | Qt::WindowSystemMenuHint | Qt::WindowMaximizeButtonHint
                                         | Qt::WindowCloseButtonHint;

ConfigInt32& close_when_done() {
    return static_cast<ConfigInt32&>(configuration_variable(setting::close_when_done));
}

class EditorWindow final : public QDialog, public PatternSampleSource {
public:
    EditorWindow(const TrackList& tracks, QWidget* owner);
    ~EditorWindow() override;

    /// Shows the window and starts reading.
    void start();
    const PatternSample* pattern_sample(ServiceBase& action) override;

protected:
    /// Escape.
    void reject() override { close(); }
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    template <class Widget>
    Widget& get(std::uint16_t id) {
        return controls_.get<Widget>(id);
    }
    void set_up_commands();
    void on_click(std::uint16_t button, void (EditorWindow::*command)());
    template <class Object>
    void on_click(std::uint16_t button, Object& object, void (Object::*command)());

    void run();
    void end_run(std::uint32_t code);
    void open_help();
    void store_close_when_done();

    PreviewedScript previewed() const;

    DialogServices services_;
    DialogControls controls_{editor_template, *this};
    AnchorResizer resizer_{*this, controls_, *editor_template.resizing};
    ValidationTip tip_{*this};
    ActionList actions_{get<QListWidget>(editor_control::action_list), [this] { preview_.script_changed(); }};
    RevocableNotify refresh_notify_;
    RevocableNotify run_notify_;
    ActionCommands action_commands_{*this, actions_, refresh_notify_, [this] { preview_.script_changed(); }};
    ScriptCommands scripts_{*this, actions_, get<DropDownBox>(editor_control::script_name), tip_,
                            refresh_notify_};
    EditorPreview preview_;
    QPointer<QWidget> focus_before_run_;
    AddMenu add_menu_{
        get<QPushButton>(editor_control::add),
        [this](ActionType& type, const std::string& name) { action_commands_.add(type, name); }};
    PatternSample sample_;
};

EditorWindow::EditorWindow(const TrackList& tracks, QWidget* owner)
    : QDialog(owner, window_flags),
      preview_(tracks, get<QTableView>(editor_control::track_list), get<QLabel>(editor_control::change_count),
               [this] { return previewed(); }) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QString::fromUtf8(editor_template.title));
    setAcceptDrops(true);
    refresh_notify_.renew([this](std::uint32_t) { preview_.output_changed(); });
    controls_.place();
    resizer_.record();
    restore_placement(*this, owner);
    services_.enter(*this);
    set_spoken_name(get<DropDownBox>(editor_control::script_name), "Script name");
    set_up_commands();
    scripts_.open();
    get<QCheckBox>(editor_control::close_when_done).setChecked(close_when_done().get().front() != 0);
}

EditorWindow::~EditorWindow() {
    preview_.stop();
    hide(); // while there is still somebody to hear of the focus that the controls lose
    services_.leave();
    save_placement(*this, parentWidget());
    tip_.close();
}

void EditorWindow::start() {
    // On no button: the first Enter is no command of theirs.
    actions_.list().setFocus();
    show();
    preview_.start();
}

void EditorWindow::on_click(std::uint16_t button, void (EditorWindow::*command)()) {
    on_click(button, *this, command);
}

template <class Object>
void EditorWindow::on_click(std::uint16_t id, Object& object, void (Object::*command)()) {
    connect(&get<QAbstractButton>(id), &QAbstractButton::clicked, this,
            [&object, command] { guarded([&] { (object.*command)(); }); });
}

void EditorWindow::set_up_commands() {
    on_click(editor_control::remove, action_commands_, &ActionCommands::remove_selected);
    on_click(editor_control::clear, scripts_, &ScriptCommands::clear);
    on_click(editor_control::up, action_commands_, &ActionCommands::move_up);
    on_click(editor_control::down, action_commands_, &ActionCommands::move_down);
    on_click(editor_control::save, scripts_, &ScriptCommands::save);
    on_click(editor_control::load, scripts_, &ScriptCommands::load);
    on_click(editor_control::append, scripts_, &ScriptCommands::append);
    on_click(editor_control::delete_script, scripts_, &ScriptCommands::delete_script);
    on_click(editor_control::export_file, scripts_, &ScriptCommands::export_to_file);
    on_click(editor_control::import_file, scripts_, &ScriptCommands::import_from_file);
    on_click(editor_control::append_file, scripts_, &ScriptCommands::append_from_file);
    on_click(editor_control::help, &EditorWindow::open_help);
    on_click(editor_control::close_when_done, &EditorWindow::store_close_when_done);
    on_click(editor_control::run, &EditorWindow::run);
    // Where the focus is on a button, Enter is that button; elsewhere it is this one.
    get<QPushButton>(editor_control::run).setDefault(true);
    connect(&get<QPushButton>(editor_control::close), &QPushButton::clicked, this, [this] { close(); });

    QListWidget& list = actions_.list();
    connect(&list, &QListWidget::itemDoubleClicked, this,
            [this] { guarded([&] { action_commands_.edit_selected(); }); });
    const auto on_key = [&](const QKeySequence& key, void (ActionCommands::*command)()) {
        auto* shortcut = new QShortcut(key, &list);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this,
                [this, command] { guarded([&] { (action_commands_.*command)(); }); });
    };
    on_key(Qt::Key_F2, &ActionCommands::edit_selected);
    on_key(Qt::Key_Delete, &ActionCommands::remove_selected);
    on_key(Qt::ALT | Qt::Key_Up, &ActionCommands::move_up);
    on_key(Qt::ALT | Qt::Key_Down, &ActionCommands::move_down);
    connect(new QShortcut(Qt::Key_F3, this), &QShortcut::activated, this,
            [this] { guarded([&] { preview_.go_to_next_change(); }); });
}

void EditorWindow::run() {
    if (actions_.script().empty()) {
        tip_.show("No actions to perform.", actions_.list());
        return;
    }
    scripts_.store_last_used();
    focus_before_run_ = focusWidget();
    setEnabled(false);
    preview_.pause();
    run_notify_.renew([this](std::uint32_t code) { end_run(code); },
                      [this](const char* text) { preview_.show_outcome(QString::fromUtf8(text)); },
                      description_of(actions_.script()));
    try {
        run_script(actions_.script(), preview_.rows().tracks(), static_cast<QWidget*>(this),
                   run_notify_.get());
    } catch (...) {
        setEnabled(true);
        preview_.resume();
        throw;
    }
}

void EditorWindow::end_run(std::uint32_t code) {
    setEnabled(true);
    if (focus_before_run_)
        focus_before_run_->setFocus();
    if (code == update_result::completed && get<QCheckBox>(editor_control::close_when_done).isChecked())
        QTimer::singleShot(0, this, [this] { close(); });
    preview_.resume();
}

void EditorWindow::open_help() {
    uShellExecute(*this, help_address());
}

void EditorWindow::store_close_when_done() {
    close_when_done().set({get<QCheckBox>(editor_control::close_when_done).isChecked() ? 1 : 0});
}

void EditorWindow::closeEvent(QCloseEvent* event) {
    // While it is disabled something else has the word: a settings dialog, or a run, which can be cancelled.
    if (isEnabled())
        event->accept();
    else
        event->ignore();
}

void EditorWindow::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || isEnabled())
        return;
    // The keyboard belongs to what the window waits for: a settings dialog, or a run's progress.
    for (QDialog* dialog : findChildren<QDialog*>(Qt::FindDirectChildrenOnly))
        if (dialog->isVisible())
            QTimer::singleShot(0, dialog, [dialog] {
                if (!dialog->isVisible())
                    return;
                dialog->raise();
                dialog->activateWindow();
            });
}

void EditorWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.size() == 1 && urls.front().isLocalFile()
        && urls.front().path().endsWith(".qvx", Qt::CaseInsensitive))
        event->acceptProposedAction();
}

void EditorWindow::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    // Names are bytes: those that are no text survive as they are in the address.
    const QByteArray encoded = event->mimeData()->urls().front().path(QUrl::FullyEncoded).toUtf8();
    const std::string path = QByteArray::fromPercentEncoding(encoded).toStdString();
    QTimer::singleShot(0, this, [this, path] { guarded([&] { scripts_.import_file(path); }); });
}

PreviewedScript EditorWindow::previewed() const {
    return {actions_.script(), action_commands_.added()};
}

const PatternSample* EditorWindow::pattern_sample(ServiceBase& action) {
    Script before;
    for (const Ref<Action>& other : actions_.script()) {
        if (static_cast<ServiceBase*>(other.get()) == &action)
            break;
        before.push_back(other);
    }
    PreviewRows& rows = preview_.rows();
    sample_ = {rows.tracks().front(), rows.tags(before, 0).after, 0,
               static_cast<std::uint32_t>(rows.tracks().size())};
    return &sample_;
}

} // namespace

void open_editor_window(const TrackList& tracks, WindowHandle owner) {
    if (!dynamic_cast<QApplication*>(QCoreApplication::instance()))
        throw exception_win32(ENOTSUP, uFormatSystemErrorMessage(ENOTSUP));
    auto* window = new EditorWindow(tracks, static_cast<QWidget*>(owner)); // deletes itself
    window->start();
}

} // namespace quorvex
