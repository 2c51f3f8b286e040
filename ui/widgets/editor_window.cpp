#include "ui/widgets/editor_window.h"

#include "component/configuration.h"
#include "engine/run.h"
#include "host/access.h"
#include "host/api/exceptions.h"
#include "host/api/tag_io.h"
#include "host/exception_filter.h"
#include "host/shared/failure.h"
#include "ui/editor_template.h"
#include "ui/widgets/add_menu.h"
#include "ui/widgets/anchor_resizer.h"
#include "ui/widgets/change_counter.h"
#include "ui/widgets/dialog_services.h"
#include "ui/widgets/help.h"
#include "ui/widgets/pattern_tip.h"
#include "ui/widgets/placement.h"
#include "ui/widgets/preview_list.h"
#include "ui/widgets/script_commands.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDialog>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <QTimer>

#include <algorithm>
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

class EditorWindow final : public QDialog, public PatternSampleSource, private TagChangeListener {
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
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    struct Edit {
        Ref<Action> action;
        bool is_new;
    };

    template <class Widget>
    Widget& get(std::uint16_t id) {
        return controls_.get<Widget>(id);
    }
    void set_up_lists();
    void set_up_commands();
    void on_click(std::uint16_t button, void (EditorWindow::*command)());
    template <class Object>
    void on_click(std::uint16_t button, Object& object, void (Object::*command)());

    void add(ActionType& type, const std::string& name);
    void edit_selected();
    void edit(std::size_t row, bool is_new);
    void end_edit(std::uint32_t code);
    void remove_selected();
    void move_up();
    void move_down();
    void run();
    void end_run(std::uint32_t code);
    void open_help();
    void store_close_when_done();

    void script_changed();
    void show_count(const ChangeCounter& counter);
    void tags_changed(TrackHandle* const* tracks, std::size_t count) override;
    PreviewedScript previewed() const;

    DialogServices services_;
    DialogControls controls_{editor_template, *this};
    AnchorResizer resizer_{*this, controls_, *editor_template.resizing};
    ValidationTip tip_{*this};
    PreviewRows rows_;
    PreviewModel preview_;
    ChangeCounter counter_;
    PreviewReader reader_;
    ActionList actions_;
    RevocableNotify refresh_notify_;
    RevocableNotify edit_notify_;
    RevocableNotify run_notify_;
    ScriptCommands scripts_;
    std::optional<Edit> edit_;
    QPointer<QWidget> focus_before_run_;
    AddMenu add_menu_{get<QPushButton>(editor_control::add),
                      [this](ActionType& type, const std::string& name) { add(type, name); }};
    PatternSample sample_;
    Ref<HostTagIO> tag_io_;
    bool is_started_ = false;
};

EditorWindow::EditorWindow(const TrackList& tracks, QWidget* owner)
    : QDialog(owner, window_flags), rows_(tracks), preview_(rows_, [this] { return previewed(); }),
      counter_(
          rows_, [this] { return previewed(); },
          [this](const ChangeCounter& counter) { show_count(counter); }),
      reader_([this](std::size_t row, std::shared_ptr<const ReadTags> read) {
          rows_.hold(row, std::move(read));
          preview_.redraw(row);
          counter_.restart();
      }),
      actions_(controls_.get<QListWidget>(editor_control::action_list), [this] { script_changed(); }),
      scripts_(*this, actions_, controls_.get<DropDownBox>(editor_control::script_name), tip_,
               refresh_notify_),
      tag_io_(only_service<HostTagIO>()) {
    tag_io_->add_change_listener(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QString::fromUtf8(editor_template.title));
    setAcceptDrops(true);
    refresh_notify_.renew([this](std::uint32_t) { script_changed(); });
    controls_.place();
    resizer_.record();
    restore_placement(*this, owner);
    services_.enter(*this);
    set_up_lists();
    set_up_commands();
    scripts_.open();
    get<QCheckBox>(editor_control::close_when_done).setChecked(close_when_done().get().front() != 0);
}

EditorWindow::~EditorWindow() {
    is_started_ = false;
    hide(); // while there is still somebody to hear of the focus that the controls lose
    services_.leave();
    save_placement(*this, parentWidget());
    reader_.cancel();
    counter_.stop();
    tip_.close();
    tag_io_->remove_change_listener(this);
    get<QTableView>(editor_control::track_list).setModel(nullptr);
}

void EditorWindow::set_up_lists() {
    set_up_preview_list(get<QTableView>(editor_control::track_list), preview_);
    set_spoken_name(get<DropDownBox>(editor_control::script_name), "Script name");
}

void EditorWindow::start() {
    show();
    fit_names(get<QTableView>(editor_control::track_list));
    get<QPushButton>(editor_control::add).setFocus();
    is_started_ = true;
    counter_.restart();
    reader_.start(rows_.shared_tracks());
}

void EditorWindow::on_click(std::uint16_t button, void (EditorWindow::*command)()) {
    on_click(button, *this, command);
}

template <class Object>
void EditorWindow::on_click(std::uint16_t id, Object& object, void (Object::*command)()) {
    auto& button = get<QAbstractButton>(id);
    if (auto* push = dynamic_cast<QPushButton*>(&button))
        push->setAutoDefault(false); // Enter runs the script, wherever the focus is
    connect(&button, &QAbstractButton::clicked, this,
            [&object, command] { guarded([&] { (object.*command)(); }); });
}

void EditorWindow::set_up_commands() {
    on_click(editor_control::remove, &EditorWindow::remove_selected);
    on_click(editor_control::clear, scripts_, &ScriptCommands::clear);
    on_click(editor_control::up, &EditorWindow::move_up);
    on_click(editor_control::down, &EditorWindow::move_down);
    on_click(editor_control::save, scripts_, &ScriptCommands::save);
    on_click(editor_control::load, scripts_, &ScriptCommands::load);
    on_click(editor_control::append, scripts_, &ScriptCommands::append);
    on_click(editor_control::delete_script, scripts_, &ScriptCommands::delete_script);
    on_click(editor_control::export_file, scripts_, &ScriptCommands::export_to_file);
    on_click(editor_control::import_file, scripts_, &ScriptCommands::import_from_file);
    on_click(editor_control::append_file, scripts_, &ScriptCommands::append_from_file);
    on_click(editor_control::help, &EditorWindow::open_help);
    on_click(editor_control::close_when_done, &EditorWindow::store_close_when_done);
    auto& run_button = get<QPushButton>(editor_control::run);
    connect(&run_button, &QPushButton::clicked, this, [this] { run(); });
    run_button.setDefault(true);
    get<QPushButton>(editor_control::add).setAutoDefault(false);
    auto& close_button = get<QPushButton>(editor_control::close);
    close_button.setAutoDefault(false);
    connect(&close_button, &QPushButton::clicked, this, [this] { close(); });

    QListWidget& list = actions_.list();
    connect(&list, &QListWidget::itemDoubleClicked, this, [this] { guarded([&] { edit_selected(); }); });
    const auto on_key = [&](const QKeySequence& key, void (EditorWindow::*command)()) {
        auto* shortcut = new QShortcut(key, &list);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this,
                [this, command] { guarded([&] { (this->*command)(); }); });
    };
    on_key(Qt::Key_F2, &EditorWindow::edit_selected);
    on_key(Qt::Key_Delete, &EditorWindow::remove_selected);
    on_key(Qt::ALT | Qt::Key_Up, &EditorWindow::move_up);
    on_key(Qt::ALT | Qt::Key_Down, &EditorWindow::move_down);
}

void EditorWindow::add(ActionType& type, const std::string& name) {
    const auto action = Ref<Action>::adopt(type.create(refresh_notify_.get()));
    actions_.append(action, action->has_settings() ? name : description_of(*action));
    edit(actions_.script().size() - 1, true);
}

void EditorWindow::edit_selected() {
    if (const auto row = actions_.selected())
        edit(*row, false);
}

void EditorWindow::edit(std::size_t row, bool is_new) {
    const Script& script = actions_.script();
    if (edit_ || row >= script.size() || !script[row]->has_settings())
        return;
    const Ref<Action> action = script[row];
    edit_ = Edit{action, is_new};
    setEnabled(false);
    edit_notify_.renew([this](std::uint32_t code) { end_edit(code); });
    script_changed(); // a new action takes no part yet
    try {
        action->create_settings_dialog(static_cast<QWidget*>(this), edit_notify_.get());
    } catch (...) {
        end_edit(0);
        throw;
    }
}

void EditorWindow::end_edit(std::uint32_t code) {
    const std::optional<Edit> ended = std::exchange(edit_, std::nullopt);
    if (!ended)
        return;
    setEnabled(true);
    const Script& script = actions_.script();
    const auto found = std::ranges::find(script, ended->action);
    if (found == script.end())
        return;
    const auto row = static_cast<std::size_t>(found - script.begin());
    if (code == 1)
        actions_.refresh(row);
    else if (ended->is_new)
        actions_.remove(row);
    actions_.list().setFocus();
}

void EditorWindow::remove_selected() {
    if (const auto row = actions_.selected())
        actions_.remove(*row);
}

void EditorWindow::move_up() {
    if (const auto row = actions_.selected(); row && *row > 0)
        actions_.move_up(*row);
}

void EditorWindow::move_down() {
    if (const auto row = actions_.selected(); row && *row + 1 < actions_.script().size())
        actions_.move_down(*row);
}

void EditorWindow::run() {
    guarded([&] {
        if (actions_.script().empty()) {
            tip_.show("No actions to perform.", actions_.list());
            return;
        }
        scripts_.store_last_used();
        focus_before_run_ = focusWidget();
        setEnabled(false);
        run_notify_.renew([this](std::uint32_t code) { end_run(code); });
        try {
            run_script(actions_.script(), rows_.tracks(), static_cast<QWidget*>(this), run_notify_.get());
        } catch (...) {
            setEnabled(true);
            throw;
        }
    });
}

void EditorWindow::end_run(std::uint32_t code) {
    setEnabled(true);
    if (focus_before_run_)
        focus_before_run_->setFocus();
    if (code == update_result::completed && get<QCheckBox>(editor_control::close_when_done).isChecked())
        QTimer::singleShot(0, this, [this] { close(); });
    else
        script_changed();
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
    return {actions_.script(), edit_ && edit_->is_new ? edit_->action.get() : nullptr};
}

void EditorWindow::script_changed() {
    if (!is_started_)
        return;
    preview_.redraw();
    counter_.restart();
}

void EditorWindow::show_count(const ChangeCounter& counter) {
    auto& label = get<QLabel>(editor_control::change_count);
    const QString total = QLocale().toString(static_cast<qulonglong>(counter.total()));
    const QString changed = QLocale().toString(static_cast<qulonglong>(counter.changed()));
    const bool is_done = counter.counted() == counter.total();
    const QString counts = QString("%1 of %2").arg(changed, total);
    const QString still = is_done ? QString() : QString(u'…');
    const QString text = counts + " change" + still;
    label.setToolTip(text);
    const bool fits = label.fontMetrics().horizontalAdvance(text) <= label.width();
    label.setText(fits ? text : counts + still);
}

void EditorWindow::tags_changed(TrackHandle* const* tracks, std::size_t count) {
    if (!is_started_)
        return;
    const bool concerns = std::ranges::any_of(rows_.tracks(), [&](const Ref<TrackHandle>& track) {
        return std::binary_search(tracks, tracks + count, track.get(), std::less<>());
    });
    if (!concerns)
        return;
    guarded([&] {
        rows_.forget_groups();
        rows_.forget_read();
        script_changed();
        reader_.start(rows_.shared_tracks());
    });
}

const PatternSample* EditorWindow::pattern_sample(ServiceBase& action) {
    Script before;
    for (const Ref<Action>& other : actions_.script()) {
        if (static_cast<ServiceBase*>(other.get()) == &action)
            break;
        before.push_back(other);
    }
    sample_ = {rows_.tracks().front(), rows_.tags(before, 0).after, 0,
               static_cast<std::uint32_t>(rows_.tracks().size())};
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
