// How the window closes: what is under way is asked about or stopped, and what was changed is stored.

#include "vantaro/desktop/main_window.h"

#include <QCloseEvent>

#include <algorithm>

namespace vantaro::core {

bool MainWindow::may_stop_updates() {
    if (*updates_ == 0)
        return true;
    return ask(QStringLiteral("Quit"),
               QStringLiteral("Files are being written. Stop after those under way, and quit? "
                              "Each file is then either done or untouched."),
               button::no);
}

bool MainWindow::may_lose_settings() {
    return host_.save_configurations()
           || ask(
               QStringLiteral("Quit"),
               QStringLiteral("Settings and saved scripts could not be stored in %1: the console says why. "
                              "Quit, and lose what was changed?")
                   .arg(QString::fromStdString(setup_.config_dir)),
               button::no);
}

bool MainWindow::close_dialogs() {
    const std::vector<QPointer<QWidget>> windows = setup_.dialogs.windows();
    // Dialogs of a window come before the window, which they keep disabled. One that is disabled by an update
    // that is to be stopped goes when this window goes.
    return std::all_of(windows.rbegin(), windows.rend(), [](const QPointer<QWidget>& window) {
        return !window || !window->isEnabled() || window->close();
    });
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    if (is_closing_)
        return;
    if (is_asking_) {
        event->ignore();
        return;
    }
    // Meanwhile the program may have been told to end.
    if (may_stop_updates() && close_dialogs() && may_lose_settings() && !is_closing_)
        shut_down();
    event->setAccepted(is_closing_);
}

void MainWindow::close_at_once() {
    if (is_closing_)
        return;
    shut_down();
    hide();
}

void MainWindow::shut_down() {
    is_closing_ = true;
    loader_.cancel();
    host_.tag_io().abort_all();
    for (const QPointer<QWidget>& window : setup_.dialogs.windows())
        window->hide();
    if (!memory_.store(*this, *list_))
        host_.report("What the window looks like could not be stored in " + setup_.config_dir);
    save_configurations();
    if (on_closed)
        on_closed();
}

void MainWindow::save_configurations() {
    save_timer_.stop();
    const bool is_saved = host_.save_configurations();
    if (!is_saved && !is_closing_ && !has_told_of_settings_) {
        const std::string text = "Settings and saved scripts could not be stored in " + setup_.config_dir
                                 + ": the console says why. They are kept until the program ends.";
        host_.for_each_service<PopupMessage>([&](PopupMessage& message) {
            message.show(text.data(), text.size(), "Vantaro", popup_icon::error);
        });
    }
    has_told_of_settings_ = !is_saved;
    if (!is_closing_)
        commands_.update_shortcuts();
}

} // namespace vantaro::core
