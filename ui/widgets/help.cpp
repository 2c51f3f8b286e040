#include "ui/widgets/help.h"

#include "component/own_services.h"
#include "host/access.h"
#include "host/api/system.h"

#include <QDesktopServices>
#include <QUrl>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr const char* help_pages = "https://help.vantaro.example/";
constexpr const char* editor_page = "5EC79881-4BB0-44DB-8825-50A57E3621DE";

} // namespace

std::string help_address() {
    const std::string version =
        text_of([](TextSink& out) { required_service<HostVersion>()->get_version_text(out); });
    return help_pages + version + '/' + component_name + '/' + editor_page + "/Main";
}

void uShellExecute(QWidget& parent, const std::string& address) {
    if (!QDesktopServices::openUrl(QUrl(QString::fromStdString(address))))
        uMessageBox(&parent, ("Cannot open " + address).c_str(), "Warning", button::ok);
}

} // namespace quorvex
