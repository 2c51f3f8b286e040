#include "ui/widgets/help.h"

#include "component/own_services.h"
#include "host/access.h"
#include "host/api/system.h"

#include <QDesktopServices>
#include <QUrl>

#include <filesystem>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr const char* editor_page = "5EC79881-4BB0-44DB-8825-50A57E3621DE";

/// Beside the component's folder in a build, below the same prefix where it is installed.
std::filesystem::path help_folder() {
    const std::filesystem::path components = std::filesystem::path(library_path()).parent_path();
    const std::filesystem::path pages = "share/doc/vantaro/help";
    const std::filesystem::path installed = components.parent_path().parent_path().parent_path() / pages;
    std::error_code error;
    return std::filesystem::exists(installed, error) ? installed : components.parent_path() / pages;
}

} // namespace

std::string help_address() {
    const std::string version =
        text_of([](TextSink& out) { required_service<HostVersion>()->get_version_text(out); });
    const QUrl folder = QUrl::fromLocalFile(QString::fromStdString(help_folder().string() + '/'));
    return folder.toString(QUrl::FullyEncoded).toStdString() + version + '/' + component_name + '/'
           + editor_page + "/Main";
}

void uShellExecute(QWidget& parent, const std::string& address) {
    const QUrl url(QString::fromStdString(address));
    std::error_code error;
    const bool is_missing =
        url.isLocalFile() && !std::filesystem::exists(url.toLocalFile().toStdString(), error);
    if (is_missing || !QDesktopServices::openUrl(url))
        uMessageBox(&parent, ("Cannot open " + address).c_str(), "Warning", button::ok);
}

} // namespace quorvex
