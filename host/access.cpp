#include "host/access.h"

#include "host/shared/failure.h"

#include <atomic>

namespace quorvex {

using namespace vantaro;

namespace {

HostApi* current_host = nullptr;
std::atomic<bool> available_now{false};

} // namespace

void set_host(HostApi* host_api) {
    current_host = host_api;
}

HostApi* host() {
    return current_host;
}

void set_services_available(bool available) {
    available_now = available;
}

bool services_available() {
    return available_now;
}

bool may_run_on_this_thread() {
    return !services_available() || host()->is_main_thread();
}

std::size_t service_count(const Guid& class_guid) {
    return host()->count_services(host()->find_service_class(class_guid));
}

Ref<ServiceBase> create_service(const Guid& class_guid, std::size_t index) {
    ServiceBase* service = nullptr;
    host()->create_service(host()->find_service_class(class_guid), index, service);
    return Ref<ServiceBase>::adopt(service);
}

Ref<ServiceBase> only_service(const Guid& class_guid) {
    switch (service_count(class_guid)) {
    case 0:
        throw exception_service_not_found();
    case 1:
        return create_service(class_guid, 0);
    default:
        throw exception_service_duplicated();
    }
}

Ref<ServiceBase> required_service(const Guid& class_guid) {
    if (service_count(class_guid) != 1)
        uBugCheck("a service that the host must offer exactly once is missing or there twice");
    return create_service(class_guid, 0);
}

namespace {
thread_local int console_silences = 0;
}

ConsoleSilence::ConsoleSilence() {
    ++console_silences;
}

ConsoleSilence::~ConsoleSilence() {
    --console_silences;
}

void print_to_console(std::string_view line) {
    if (console_silences > 0 || !services_available())
        return;
    for_each_service<HostConsole>([&](HostConsole& console) { console.print(line.data(), line.size()); });
}

void note_undone_work(const std::string& why) {
    if (services_available())
        for_each_service<UndoneWork>([&](UndoneWork& undone) { undone.note(why.c_str()); });
}

std::uint32_t uMessageBox(WindowHandle parent, const char* text, const char* caption, std::uint32_t buttons) {
    PopupQuestion::Request request;
    request.title = caption;
    request.message = text;
    request.buttons = buttons;
    request.default_button = button::ok;
    request.icon = popup_icon::warning;
    request.parent = parent;
    return required_service<PopupQuestion>()->ask(request);
}

} // namespace quorvex
