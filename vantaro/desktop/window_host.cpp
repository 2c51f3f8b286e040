#include "vantaro/desktop/window_host.h"

#include "host/api/exceptions.h"
#include "vantaro/storage/default_folders.h"
#include "vantaro/windows/shown_text.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QStatusBar>

namespace vantaro::core {

WindowHost::WindowHost(HostSetup setup, Interrupt& interrupt)
    : config_dir_(setup.config_dir.empty() ? default_config_dir() : setup.config_dir),
      host_(completed(std::move(setup), interrupt)) {
    if (config_dir_.empty())
        throw vantaro_io::exception_io_not_found(no_home_folder);
    host_.services().add_own<ModalDialogGuard>(guard_);
    host_.services().add_own<ModelessDialogRegistry>(dialogs_);
    host_.load_components();
    window_ = std::make_unique<MainWindow>(host_, WindowSetup{console_, question_, dialogs_, config_dir_});
    host_.set_main_window(static_cast<QWidget*>(window_.get()));
    message_.set_parent(window_.get());
    window_->on_closed = [] { QCoreApplication::exit(0); };
    auto* interrupted =
        new QSocketNotifier(interrupt.flag().wait_handle(), QSocketNotifier::Read, window_.get());
    QObject::connect(interrupted, &QSocketNotifier::activated, window_.get(), [this, interrupted] {
        interrupted->setEnabled(false); // it stays readable
        window_->close_at_once();
    });
}

void WindowHost::show() {
    window_->show();
    tell(console_.lines());
    host_.on_reported_once = [this](const std::string& line) {
        QMetaObject::invokeMethod(
            window_.get(), [this, shown = shown_text(line)] { tell({shown}); }, Qt::QueuedConnection);
    };
}

/// The console is hidden as a rule.
void WindowHost::tell(const QStringList& lines) {
    if (lines.isEmpty())
        return;
    constexpr int duration = 60'000; // milliseconds
    window_->statusBar()->showMessage(lines.back(), duration);
    const std::string text = lines.join('\n').toStdString();
    message_.show(text.data(), text.size(), "Vantaro", popup_icon::warning);
}

WindowHost::~WindowHost() {
    host_.on_reported_once = {};
    host_.wait_until_idle();
    host_.set_main_window(nullptr);
    message_.set_parent(nullptr);
    window_.reset();
    host_.save_configurations();
    host_.close();
}

HostSetup WindowHost::completed(HostSetup setup, Interrupt& interrupt) {
    for (const std::string& line : setup.reported)
        console_.note(line);
    setup.interrupt = &interrupt;
    setup.config_dir = config_dir_;
    setup.console = &console_;
    setup.message = &message_;
    setup.question = &question_;
    setup.make_watcher = [this](std::size_t total, WindowHandle parent) {
        return window_->watch(total, static_cast<QWidget*>(parent));
    };
    return setup;
}

} // namespace vantaro::core
