// What the window shows around its list: menus, the status bar, the console.

#include "vantaro/desktop/main_window.h"

#include <QApplication>
#include <QDockWidget>
#include <QHeaderView>
#include <QMenuBar>
#include <QPointer>
#include <QStatusBar>

namespace vantaro::core {

void MainWindow::make_menus() {
    std::vector<QAction*> own;
    const auto add_action = [&](QMenu* menu, const char* text, const QKeySequence& keys, auto&& call) {
        QAction* action = menu->addAction(QString::fromUtf8(text));
        action->setShortcut(keys);
        connect(action, &QAction::triggered, this, call);
        own.push_back(action);
        return action;
    };

    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    add_action(file, "&Add files…", QKeySequence::Open, [this] { choose_files(); });
    add_action(file, "Add f&older…", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
               [this] { choose_folder(); });
    file->addSeparator();
    // Keys that mean something else in the console.
    const auto is_for_list = [this](QAction* action) {
        action->setShortcutContext(Qt::WidgetShortcut);
        list_->addAction(action);
        return action;
    };
    selection_actions_.push_back(is_for_list(
        add_action(file, "&Remove from list", QKeySequence::Delete, [this] { remove_selected(); })));
    clear_action_ = add_action(file, "&Clear list", {}, [this] { clear_list(); });
    file->addSeparator();
    add_action(file, "&Quit", QKeySequence(Qt::CTRL | Qt::Key_Q), [this] { close(); });

    QMenu* edit = menuBar()->addMenu(QStringLiteral("&Edit"));
    undo_action_ = add_action(edit, "&Undo last run…", QKeySequence::Undo, [this] {
        // From a component's window too, which tells of the run; not from a dialog before that.
        const QPointer<QWidget> active = QApplication::activeWindow();
        if (active && active != this && active->parentWidget() != this)
            return;
        undo_last_run();
        if (active)
            active->activateWindow();
    });
    undo_action_->setShortcutContext(Qt::ApplicationShortcut);
    edit->addSeparator();
    is_for_list(add_action(edit, "Select &all", QKeySequence::SelectAll, [this] { list_->selectAll(); }));

    QMenu* tracks = menuBar()->addMenu(QStringLiteral("T&racks"));
    connect(tracks, &QMenu::aboutToShow, this, [this, tracks] {
        tracks->clear();
        commands_.fill(*tracks);
        if (tracks->isEmpty())
            tracks->addAction(QStringLiteral("Select tracks to see what can be done with them"))
                ->setEnabled(false);
    });

    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    QMenu* columns = view->addMenu(QStringLiteral("&Columns"));
    connect(columns, &QMenu::aboutToShow, this, [this, columns] {
        columns->clear();
        fill_columns_menu(*columns);
    });
    auto* console = new QDockWidget(QStringLiteral("Console"), this);
    console->setObjectName(QStringLiteral("console"));
    console->setWidget(setup_.console.make_panel(console));
    addDockWidget(Qt::BottomDockWidgetArea, console);
    console->hide();
    connect(console->toggleViewAction(), &QAction::triggered, this, [this, console](bool is_shown) {
        // What it wants is more than half of the window.
        if (is_shown && console->height() > height() / 3)
            resizeDocks({console}, {fontMetrics().height() * 9}, Qt::Vertical);
    });
    view->addAction(console->toggleViewAction());

    QMenu* tools = menuBar()->addMenu(QStringLiteral("&Tools"));
    add_action(tools, "&Preferences…", QKeySequence(Qt::CTRL | Qt::Key_Comma),
               [this] { show_preferences_window(); });
    add_action(tools, "&Keyboard shortcuts…", {}, [this] { commands_.edit_keys(); });

    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    add_action(help, "&About Vantaro", {}, [this] { show_about(); });

    connect(list_->header(), &QWidget::customContextMenuRequested, this, [this](const QPoint& place) {
        QMenu menu(this);
        fill_columns_menu(menu);
        menu.exec(list_->header()->mapToGlobal(place));
    });
    commands_.set_own_actions(own);
}

void MainWindow::fill_columns_menu(QMenu& menu) {
    for (const ColumnInfo& column : all_columns()) {
        const int section = static_cast<int>(column.column);
        QAction* action = menu.addAction(QString::fromLatin1(column.heading));
        action->setCheckable(true);
        action->setChecked(!list_->isColumnHidden(section));
        action->setEnabled(!list_->is_last_visible(column.column));
        connect(action, &QAction::toggled, this,
                [this, section](bool is_shown) { list_->setColumnHidden(section, !is_shown); });
    }
    menu.addSeparator();
    connect(menu.addAction(QStringLiteral("&Reset columns")), &QAction::triggered, this,
            [this] { list_->reset_columns(); });
}

void MainWindow::show_context_menu(const QPoint& place) {
    if (list_->selected_count() == 0)
        return;
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("track menu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    commands_.fill(*menu);
    if (!menu->isEmpty())
        menu->addSeparator();
    connect(menu->addAction(QStringLiteral("&Open folder")), &QAction::triggered, this,
            [this] { open_folder(); });
    // The window's own action: with its keys, and once only.
    menu->addAction(selection_actions_.front());
    menu->popup(list_->viewport()->mapToGlobal(place));
}

void MainWindow::make_status_bar() {
    summary_ = new QLabel(this);
    summary_->setObjectName(QStringLiteral("summary"));
    progress_text_ = new QLabel(this);
    progress_bar_ = new QProgressBar(this);
    progress_bar_->setObjectName(QStringLiteral("progress"));
    progress_bar_->setAccessibleName(QStringLiteral("Progress of reading"));
    progress_bar_->setTextVisible(false);
    progress_bar_->setFixedWidth(fontMetrics().averageCharWidth() * 24);
    progress_bar_->setMaximumHeight(fontMetrics().height());
    cancel_button_ = new QToolButton(this);
    cancel_button_->setObjectName(QStringLiteral("cancel"));
    cancel_button_->setText(QStringLiteral("Cancel"));
    cancel_button_->setAutoRaise(true);
    connect(cancel_button_, &QToolButton::clicked, this, [this] {
        if (loader_.cancel())
            statusBar()->showMessage(
                QStringLiteral("The command was cancelled with the reading of its tracks."), hint_duration);
    });
    statusBar()->addWidget(summary_, 1);
    statusBar()->addPermanentWidget(progress_text_);
    statusBar()->addPermanentWidget(progress_bar_);
    statusBar()->addPermanentWidget(cancel_button_);
}

} // namespace vantaro::core
