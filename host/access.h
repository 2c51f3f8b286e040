// The component's way to its host: the HostApi that it was handed, and services found through it.
//
//     Ref<HostTagIO> tag_io = required_service<HostTagIO>();
//     for_each_service<HostConsole>([&](HostConsole& console) { console.print(line.data(), line.size()); });
//
// Any thread, once the host has been set.
#pragma once

#include "host/api/host_api.h"
#include "host/api/user_interaction.h"

#include <string>
#include <string_view>

namespace quorvex {

using vantaro::Guid;
using vantaro::Ref;

/// Replaces the host that every lookup goes through. Called once while the component is being loaded, before
/// any other thread runs.
void set_host(vantaro::HostApi* host);
/// The host; nullptr before set_host.
vantaro::HostApi* host();

/// Whether the host has announced that its services may be used.
void set_services_available(bool available);
bool services_available();

/// False only while the host's services are available and this is not its main thread.
bool may_run_on_this_thread();

std::size_t service_count(const Guid& class_guid);
/// Throws: vantaro::exception_service_not_found.
Ref<vantaro::ServiceBase> create_service(const Guid& class_guid, std::size_t index);
/// The only service of its class.
/// Throws: vantaro::exception_service_not_found, vantaro::exception_service_duplicated.
Ref<vantaro::ServiceBase> only_service(const Guid& class_guid);
/// The same where its absence is a fatal internal error.
Ref<vantaro::ServiceBase> required_service(const Guid& class_guid);

template <class I>
Ref<I> create_service(std::size_t index) {
    return Ref<I>::adopt(static_cast<I*>(create_service(I::class_guid, index).detach()));
}

template <class I>
Ref<I> only_service() {
    return Ref<I>::adopt(static_cast<I*>(only_service(I::class_guid).detach()));
}

template <class I>
Ref<I> required_service() {
    return Ref<I>::adopt(static_cast<I*>(required_service(I::class_guid).detach()));
}

/// The extension of `service` that answers for I.
/// Throws: vantaro::exception_service_extension_not_found.
template <class I>
Ref<I> service_extension(vantaro::ServiceBase& service) {
    Ref<I> extension = vantaro::query_interface<I>(service);
    if (!extension)
        throw vantaro::exception_service_extension_not_found();
    return extension;
}

/// Calls `visit(I&)` for every service of the class, in the host's order.
template <class I, class Visit>
void for_each_service(Visit&& visit) {
    const std::size_t count = service_count(I::class_guid);
    for (std::size_t index = 0; index < count; ++index)
        visit(*create_service<I>(index));
}

/// Prints one line on every console; dropped silently while the host's services are not available.
void print_to_console(std::string_view line);

/// Tells the host that something a person asked for is not done. `why` is a line for them; empty where the
/// console has it already.
void note_undone_work(const std::string& why);

/// While one is there, what its thread prints on the console is dropped: trying an action on many tracks,
/// when nobody has asked for it yet, is no reason to fill the console.
class ConsoleSilence {
public:
    ConsoleSilence();
    ~ConsoleSilence();
    ConsoleSilence(const ConsoleSilence&) = delete;
    ConsoleSilence& operator=(const ConsoleSilence&) = delete;
};

/// Shows a message with these buttons and waits. Returns the vantaro::button bit that was pressed.
std::uint32_t uMessageBox(vantaro::WindowHandle parent, const char* text, const char* caption,
                          std::uint32_t buttons);

} // namespace quorvex
