#include "vantaro/desktop/desktop.h"

#include "vantaro/application/exit_status.h"
#include "vantaro/desktop/main_window.h"
#include "vantaro/storage/default_folders.h"
#include "vantaro/windows/modal_guard.h"
#include "vantaro/windows/window_message.h"
#include "vantaro/windows/window_question.h"

#include <QApplication>
#include <QIcon>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace vantaro::core {

bool has_display() {
    constexpr std::array names{"WAYLAND_DISPLAY", "DISPLAY", "QT_QPA_PLATFORM"};
    return std::ranges::any_of(names, [](const char* name) {
        const char* value = std::getenv(name);
        return value && *value;
    });
}

int run_desktop(int& argc, char** argv, HostSetup setup, const std::vector<std::string>& paths) {
    Interrupt interrupt;
    QApplication qt(argc, argv);
    QApplication::setApplicationName(QStringLiteral("vantaro"));
    // No display name: toolkits add it to the titles of components' windows, which have their own.
    QApplication::setApplicationVersion(QString::fromLatin1(host_version));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.vantaro.Vantaro"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("org.vantaro.Vantaro")));
    // Windows of components may outlast the main window for a moment, and must not keep the program.
    QApplication::setQuitOnLastWindowClosed(false);

    Terminal terminal;
    PanelConsole console(&terminal);
    WindowMessage message;
    ModalGuard guard;
    WindowQuestion question(guard);
    DialogRegistry dialogs;
    MainWindow* shown = nullptr;
    if (setup.config_dir.empty())
        setup.config_dir = default_config_dir();
    setup.interrupt = &interrupt;
    setup.console = &console;
    setup.message = &message;
    setup.question = &question;
    setup.make_watcher = [&](std::size_t total, WindowHandle parent) {
        return shown->watch(total, static_cast<QWidget*>(parent));
    };
    Host host(setup);
    host.services().add_own<ModalDialogGuard>(guard);
    host.services().add_own<ModelessDialogRegistry>(dialogs);
    host.load_components();
    {
        MainWindow window(host, {console, question, dialogs, setup.config_dir});
        shown = &window;
        host.set_main_window(static_cast<QWidget*>(&window));
        message.set_parent(&window);
        window.on_closed = [] { QCoreApplication::exit(0); };
        QSocketNotifier interrupted(interrupt.flag().wait_handle(), QSocketNotifier::Read);
        QObject::connect(&interrupted, &QSocketNotifier::activated, &window, [&] {
            interrupted.setEnabled(false); // it stays readable
            window.close_at_once();
        });
        window.show();
        window.add(paths);
        QApplication::exec();
        host.wait_until_idle();
        host.set_main_window(nullptr);
        message.set_parent(nullptr);
    }
    host.save_configurations();
    host.close();
    return interrupt.flag().is_aborting() ? exit_status::interrupted : exit_status::done;
}

} // namespace vantaro::core
