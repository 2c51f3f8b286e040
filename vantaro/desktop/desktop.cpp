#include "vantaro/desktop/desktop.h"

#include "vantaro/application/exit_status.h"
#include "vantaro/desktop/window_host.h"

#include <QApplication>
#include <QIcon>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace vantaro::core {

namespace {

/// Prints what the toolkit says while it starts. It would end the process by a crash where the display cannot
/// be reached.
void print_start_message(QtMsgType type, const QMessageLogContext&, const QString& text) {
    Terminal().line("vantaro: " + text.toStdString());
    if (type == QtFatalMsg)
        std::_Exit(exit_status::not_begun);
}

} // namespace

bool has_display() {
    constexpr std::array names{"WAYLAND_DISPLAY", "DISPLAY", "QT_QPA_PLATFORM"};
    return std::ranges::any_of(names, [](const char* name) {
        const char* value = std::getenv(name);
        return value && *value;
    });
}

int run_desktop(int& argc, char** argv, HostSetup setup, const std::vector<std::string>& paths) {
    Interrupt interrupt;
    qInstallMessageHandler(print_start_message);
    QApplication qt(argc, argv);
    qInstallMessageHandler(nullptr);
    QApplication::setApplicationName(QStringLiteral("vantaro"));
    // No display name: toolkits add it to the titles of components' windows, which have their own.
    QApplication::setApplicationVersion(QString::fromLatin1(host_version));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.vantaro.Vantaro"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("org.vantaro.Vantaro")));
    // Windows of components may outlast the main window for a moment, and must not keep the program.
    QApplication::setQuitOnLastWindowClosed(false);

    {
        WindowHost program(std::move(setup), interrupt);
        program.show();
        program.window().add(paths);
        QApplication::exec();
    }
    return interrupt.flag().is_aborting() ? exit_status::interrupted : exit_status::done;
}

} // namespace vantaro::core
