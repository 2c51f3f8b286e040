#include "vantaro/desktop/window_host.h"

#include "vantaro/storage/default_folders.h"

#include <QApplication>
#include <QSocketNotifier>

namespace vantaro::core {

WindowHost::WindowHost(HostSetup setup, Interrupt& interrupt)
    : config_dir_(setup.config_dir.empty() ? default_config_dir() : setup.config_dir),
      host_(completed(std::move(setup), interrupt)) {
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

WindowHost::~WindowHost() {
    host_.wait_until_idle();
    host_.set_main_window(nullptr);
    message_.set_parent(nullptr);
    window_.reset();
    host_.save_configurations();
    host_.close();
}

HostSetup WindowHost::completed(HostSetup setup, Interrupt& interrupt) {
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
