#include "vantaro/desktop/main_window.h"

#include "host/api/exceptions.h"
#include "vantaro/desktop/run_outcome.h"
#include "vantaro/locations/playlist.h"
#include "vantaro/storage/files.h"
#include "vantaro/tags/formats.h"
#include "vantaro/windows/preferences_window.h"
#include "vantaro/windows/shown_text.h"
#include "vantaro/windows/update_window.h"

#include <QApplication>
#include <QDateTime>
#include <QDesktopServices>
#include <QFileDialog>
#include <QHeaderView>
#include <QLocale>
#include <QMessageBox>
#include <QStatusBar>
#include <QUrl>
#include <QWindow>

#include <algorithm>
#include <iterator>

namespace vantaro::core {

namespace {

constexpr int save_delay = 2000;  // milliseconds after something that may have changed a configuration
constexpr int summary_delay = 40; // milliseconds: a selection that is being drawn changes all the time

/// Passes an update on to its window, and counts it as long as it lives.
class CountedWatcher final : public UpdateWatcher {
public:
    using Tell = std::function<QString(const UpdateReport& report)>;

    /// `tell` says what is to be said of the end, and may be empty.
    CountedWatcher(std::unique_ptr<UpdateWatcher> watcher, std::shared_ptr<int> count, Tell tell = {})
        : watcher_(std::move(watcher)), count_(std::move(count)), tell_(std::move(tell)) {
        ++*count_;
    }
    ~CountedWatcher() override { --*count_; }
    void on_queued(const std::shared_ptr<AbortSignal>& abort) override { watcher_->on_queued(abort); }
    void on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) override {
        watcher_->on_track(outcome, done, total);
    }
    void on_end(const UpdateReport& report) override {
        watcher_->on_end(report);
        if (tell_)
            summary_ = tell_(report).toStdString();
    }
    std::string summary(const UpdateReport&) const override { return summary_; }

private:
    const std::unique_ptr<UpdateWatcher> watcher_;
    const std::shared_ptr<int> count_;
    const Tell tell_;
    std::string summary_;
};

QString counted(std::size_t count, const char* one, const char* several) {
    return QLocale().toString(static_cast<qulonglong>(count)) + u' '
           + QString::fromLatin1(count == 1 ? one : several);
}

double length_of(const Track& track) {
    const Ref<HeldInfo> held = track.held();
    return held ? held->info().length() : 0;
}

} // namespace

MainWindow::MainWindow(Host& host, const WindowSetup& setup)
    : host_(host), setup_(setup), memory_(setup.config_dir),
      model_([&host](const std::string& line) { host.report(line); }), list_(new TrackList(model_, this)),
      loader_(host, model_), commands_(host, *list_, loader_, *this, setup.config_dir),
      disk_changes_([&host](const std::string& line) { host.report(line); }) {
    setWindowTitle(QStringLiteral("Vantaro"));
    resize(list_->width_of_columns(), fontMetrics().height() * 40);
    setContextMenuPolicy(Qt::NoContextMenu);
    setCentralWidget(list_);
    list_->setFocus();
    list_->on_drop = [this](std::vector<std::string> locations) { add(std::move(locations)); };
    connect(list_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& place) { show_context_menu(place); });
    make_status_bar();
    make_menus();
    memory_.restore(*this, *list_);

    loader_.on_change = [this] { show_progress(); };
    commands_.on_hint = [this](const QString& text) { statusBar()->showMessage(text, hint_duration); };
    commands_.on_executed = [this] { save_timer_.start(); };
    save_timer_.setSingleShot(true);
    save_timer_.setInterval(save_delay);
    connect(&save_timer_, &QTimer::timeout, this, [this] { save_configurations(); });
    // A dialog that opens or closes moves the focus; it may have changed something by then.
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow* focused) {
        if (focused)
            host_.take_stored_configurations();
        save_timer_.start();
    });
    host_.configuration_service().on_changed = [this] { save_timer_.start(); };
    // What other processes store, while nobody touches a window here.
    try {
        make_folder(setup_.config_dir);
        config_watcher_.addPath(QFile::decodeName(QByteArray::fromStdString(setup_.config_dir)));
    } catch (const vantaro_io::exception_io&) {
        // Storing something there will fail as well, and say so.
    }
    connect(&config_watcher_, &QFileSystemWatcher::directoryChanged, &save_timer_,
            qOverload<>(&QTimer::start));
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive)
            save_configurations();
    });
    summary_timer_.setSingleShot(true);
    summary_timer_.setInterval(summary_delay);
    connect(&summary_timer_, &QTimer::timeout, this, [this] { show_selection(); });
    const auto show_soon = [this] {
        if (!summary_timer_.isActive())
            summary_timer_.start();
    };
    connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this, show_soon);
    connect(&model_, &QAbstractItemModel::dataChanged, this, show_soon);
    connect(&model_, &QAbstractItemModel::rowsInserted, this, show_soon);
    connect(&model_, &QAbstractItemModel::rowsRemoved, this, show_soon);
    connect(&model_, &QAbstractItemModel::modelReset, this, show_soon);
    host_.tag_io().add_change_listener(this);
    show_selection();
    show_progress();
}

MainWindow::~MainWindow() {
    host_.configuration_service().on_changed = {};
    host_.tag_io().remove_change_listener(this);
    // The list uses the model, which would go first.
    delete list_;
}

void MainWindow::add(std::vector<std::string> locations) {
    loader_.add(std::move(locations));
    show_progress();
}

std::unique_ptr<UpdateWatcher> MainWindow::watch(std::size_t total, QWidget* parent) {
    // A component's window works on long after the command that opened it, and others may follow.
    if (parent && parent != this)
        host_.tag_io().set_activity(parent->windowTitle().toStdString());
    return std::make_unique<CountedWatcher>(
        make_update_window(parent ? parent : this, total), updates_,
        [this](const UpdateReport& report) { return tell_outcome(report); });
}

QString MainWindow::tell_outcome(const UpdateReport& report) const {
    QString text = outcome_text(report, undo_action_->shortcut());
    if (!is_closing_)
        statusBar()->showMessage(text, outcome_duration);
    return text;
}

void MainWindow::tags_changed(TrackHandle* const*, std::size_t) {
    model_.refresh();
}

void MainWindow::show_progress() {
    const TrackLoader::Progress progress = loader_.progress();
    const bool is_busy = loader_.is_busy() && !is_closing_;
    progress_text_->setVisible(is_busy);
    progress_bar_->setVisible(is_busy);
    cancel_button_->setVisible(is_busy);
    if (!is_busy)
        return;
    if (progress.is_finding_files) {
        progress_text_->setText(QStringLiteral("Looking for files…"));
        progress_bar_->setRange(0, 0);
        return;
    }
    const QLocale locale;
    progress_text_->setText(QStringLiteral("Reading tags: %1 of %2")
                                .arg(locale.toString(static_cast<qulonglong>(progress.done)),
                                     locale.toString(static_cast<qulonglong>(progress.total))));
    progress_bar_->setRange(0, static_cast<int>(progress.total));
    progress_bar_->setValue(static_cast<int>(progress.done));
}

void MainWindow::show_selection() {
    const std::vector<int> selected = list_->selected_rows();
    for (QAction* action : selection_actions_)
        action->setEnabled(!selected.empty());
    const auto count = static_cast<std::size_t>(model_.rowCount());
    clear_action_->setEnabled(count > 0);
    if (count == 0) {
        summary_->clear();
        return;
    }
    double seconds = 0;
    if (selected.empty())
        for (int row = 0; row < model_.rowCount(); ++row)
            seconds += length_of(model_.track(row));
    for (const int row : selected)
        seconds += length_of(model_.track(row));
    QString text = counted(count, "track", "tracks");
    if (!selected.empty())
        text = QStringLiteral("%1 of %2 selected")
                   .arg(QLocale().toString(static_cast<qulonglong>(selected.size())), text);
    if (seconds > 0)
        text += QStringLiteral("  ·  ") + duration_text(seconds);
    if (const std::size_t unreadable = model_.failure_count(); unreadable > 0)
        text +=
            QStringLiteral("  ·  %1 unreadable").arg(QLocale().toString(static_cast<qulonglong>(unreadable)));
    summary_->setText(text);
}

void MainWindow::choose_files() {
    std::vector<std::string> extensions = tags::audio_extensions();
    std::ranges::move(playlist_extensions(), std::back_inserter(extensions));
    QString patterns;
    for (const std::string& extension : extensions) {
        const QString pattern = QStringLiteral("*.%1 ").arg(QString::fromStdString(extension));
        patterns += pattern + pattern.toUpper(); // some desktops take them by the letter
    }
    const QString filters = QStringLiteral("Music and playlists (%1);;All files (*)").arg(patterns.trimmed());
    const QStringList names = QFileDialog::getOpenFileNames(this, QStringLiteral("Add files"), {}, filters,
                                                            nullptr, QFileDialog::HideNameFilterDetails);
    std::vector<std::string> locations;
    for (const QString& name : names)
        locations.push_back(QFile::encodeName(name).toStdString());
    add(std::move(locations));
}

void MainWindow::choose_folder() {
    const QString name = QFileDialog::getExistingDirectory(this, QStringLiteral("Add folder"));
    if (!name.isEmpty())
        add({QFile::encodeName(name).toStdString()});
}

void MainWindow::remove_selected() {
    const std::vector<int> rows = list_->selected_rows();
    if (rows.empty())
        return;
    model_.remove(rows);
    // The keyboard goes on where the rows were.
    const int next = std::min(rows.front(), model_.rowCount() - 1);
    if (next >= 0)
        list_->selectionModel()->setCurrentIndex(model_.index(next, list_->header()->logicalIndexAt(0)),
                                                 QItemSelectionModel::ClearAndSelect
                                                     | QItemSelectionModel::Rows);
}

void MainWindow::clear_list() {
    loader_.cancel();
    model_.clear();
}

void MainWindow::open_folder() {
    const std::vector<Track*> tracks = list_->selected_tracks();
    if (tracks.empty())
        return;
    // As bytes: a name need not be text.
    const QByteArray path = tracks.front()->path();
    const QByteArray folder = path.left(path.lastIndexOf('/') + 1);
    if (!QDesktopServices::openUrl(QUrl::fromEncoded("file://" + folder.toPercentEncoding("/"))))
        statusBar()->showMessage(QStringLiteral("There is no program here that shows folders."),
                                 hint_duration);
}

void MainWindow::show_preferences_window() {
    show_preferences(host_, setup_.config_dir, this);
    save_configurations();
}

void MainWindow::show_about() {
    QString text = QStringLiteral("<h3>Vantaro %1</h3><p>Edits the tags of music files.</p>")
                       .arg(QLatin1String(host_version));
    QString components;
    host_.for_each_service<ComponentVersion>([&](ComponentVersion& component) {
        const auto shown = [](const std::string& part) {
            return QString::fromStdString(part).toHtmlEscaped();
        };
        components += QStringLiteral("<tr><td>%1</td><td>&nbsp;&nbsp;%2</td></tr>")
                          .arg(shown(text_of([&](TextSink& out) { component.get_component_name(out); })),
                               shown(text_of([&](TextSink& out) { component.get_version(out); })));
    });
    if (!components.isEmpty())
        text += QStringLiteral("<p>Components:</p><table>%1</table>").arg(components);
    auto* box = new QMessageBox(QMessageBox::Information, QStringLiteral("About Vantaro"), text,
                                QMessageBox::Close, this);
    box->setTextFormat(Qt::RichText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && list_ && !is_closing_)
        look_at_files();
}

void MainWindow::look_at_files() {
    if (*updates_ > 0)
        return;
    std::vector<Track*> tracks = list_->visible_tracks();
    const std::vector<Track*> selected = list_->selected_tracks();
    tracks.insert(tracks.end(), selected.begin(), selected.end());
    std::ranges::sort(tracks);
    tracks.erase(std::unique(tracks.begin(), tracks.end()), tracks.end());
    // The others wait to be read anyway.
    if (loader_.is_busy())
        std::erase_if(tracks, [this](Track* track) { return !track->held() && !model_.has_failed(*track); });
    disk_changes_.look_at(std::move(tracks),
                          [this](std::vector<Track*> changed) { loader_.read(std::move(changed)); });
}

bool MainWindow::ask(const QString& title, const QString& text, std::uint32_t default_button) {
    const std::string title_bytes = title.toStdString();
    const std::string text_bytes = text.toStdString();
    PopupQuestion::Request request;
    request.title = title_bytes.c_str();
    request.message = text_bytes.c_str();
    request.buttons = button::yes | button::no;
    request.default_button = default_button;
    request.icon = popup_icon::warning;
    request.parent = this;
    is_asking_ = true;
    const bool is_yes = (setup_.question.ask(request) & button::yes) != 0;
    is_asking_ = false;
    return is_yes;
}

void MainWindow::undo_last_run() {
    if (*updates_ > 0) {
        statusBar()->showMessage(QStringLiteral("Tags are being written: undo when that has ended."),
                                 hint_duration);
        return;
    }
    std::optional<RunSummary> run;
    try {
        run = newest_run_to_undo(host_.runs().runs());
    } catch (const std::exception& error) {
        host_.report(error.what());
    }
    if (!run) {
        statusBar()->showMessage(QStringLiteral("There is nothing to undo."), hint_duration);
        return;
    }
    const QString time =
        QLocale().toString(QDateTime::fromMSecsSinceEpoch(run->start.time / 1'000'000), QLocale::ShortFormat);
    const QString name =
        run->start.activity.empty() ? QString() : shown_text(" \"" + run->start.activity + '"');
    if (!ask(QStringLiteral("Undo last run"),
             QStringLiteral("The run%1 of %2 changed %3. Give each its previous content again?")
                 .arg(name, time, counted(run->files, "file", "files")),
             button::yes)
        || is_closing_)
        return;
    auto watcher = make_update_window(this, run->files, {QStringLiteral("Undoing"), "put back"});
    start_undo(host_, run->number, std::make_unique<CountedWatcher>(std::move(watcher), updates_),
               [this](const UndoOutcome& outcome) { end_undo(outcome); });
}

void MainWindow::end_undo(const UndoOutcome& outcome) {
    if (!outcome.error.empty())
        host_.report(outcome.error);
    if (is_closing_)
        return;
    std::vector<Track*> tracks;
    std::ranges::copy_if(outcome.put_back, std::back_inserter(tracks),
                         [this](const Track* track) { return model_.contains(*track); });
    if (!tracks.empty())
        loader_.read(std::move(tracks));
    const UndoReport& report = outcome.report;
    QString text = counted(report.put_back, "file", "files") + QStringLiteral(" put back");
    if (!outcome.error.empty())
        text = shown_text(outcome.error);
    else if (report.failed > 0)
        text += QStringLiteral(", %1 not").arg(QLocale().toString(static_cast<qulonglong>(report.failed)));
    if (report.aborted)
        text += QStringLiteral("; cancelled, the others were not touched");
    statusBar()->showMessage(text + u'.', hint_duration);
}

} // namespace vantaro::core
