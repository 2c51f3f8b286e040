// The two ends of a component: what the host hands it (HostApi) and what it hands back (ComponentClient).
//
//     ServiceClass* types = api.find_service_class(ActionType::class_guid);
//     for (std::size_t i = 0; i < api.count_services(types); ++i) {
//         ServiceBase* service = nullptr;
//         api.create_service(types, i, service);
//         ...
//     }
//
// A component is a shared library with one exported function, vantaro_get_interface. While it is being loaded
// it builds a list of ServiceRecords; the host walks that list. HostApi may be called from any thread but
// where an operation says otherwise; the host calls ComponentClient on its main thread.
#pragma once

#include "host/api/abort_flag.h"
#include "host/api/service.h"
#include "host/api/stream.h"

namespace vantaro {

/// All services of one class, as the host knows them. Opaque; lives as long as the host.
struct ServiceClass;

/// A window of the host's toolkit (on this system a QWidget*), or nullptr for none. Never owned by a
/// component.
using WindowHandle = void*;

class HostApi {
public:
    /// Never nullptr: a class without services has count 0.
    virtual ServiceClass* find_service_class(const Guid& class_guid) = 0;
    /// Makes or hands out the service at `index` (0 to count_services()-1, in the host's order), and stores
    /// it in `out` with one reference for the caller, releasing what `out` held. Throws:
    /// exception_service_not_found when there is no such index.
    virtual void create_service(ServiceClass* service_class, std::size_t index, ServiceBase*& out) = 0;
    virtual std::size_t count_services(ServiceClass* service_class) = 0;
    /// The host's main window; nullptr when it has none (in a terminal).
    virtual WindowHandle main_window() = 0;
    /// Ends the process as a fatal internal error when called on another thread than the main thread.
    virtual void ensure_main_thread() = 0;
    virtual bool is_main_thread() = 0;

protected:
    ~HostApi() = default;
};

/// One registered service: a link of the component's service list.
class ServiceRecord {
public:
    /// The following record, or nullptr.
    ServiceRecord* next() const { return next_; }
    const Guid& class_guid() const { return class_guid_; }
    /// Stores a service object of the record's class in `out` with one reference for the caller.
    virtual void create_instance(ServiceBase*& out) = 0;

protected:
    ServiceRecord(ServiceRecord* next, const Guid& class_guid) : next_(next), class_guid_(class_guid) {}
    ~ServiceRecord() = default;

private:
    ServiceRecord* next_;
    const Guid& class_guid_;
};

/// The version of this interface. A host turns away a component that reports another one.
inline constexpr std::uint32_t component_interface_version = 80;

class ComponentClient {
public:
    virtual std::uint32_t get_version() = 0;
    /// Head of the service list, or nullptr.
    virtual ServiceRecord* get_service_list() = 0;
    /// Writes all configuration variables.
    virtual void get_config(StreamWriter& writer, AbortFlag& abort) = 0;
    /// Reads configuration variables; those that do not occur keep their values. Comes before any service is
    /// used, and again whenever another process has stored some of them anew.
    /// Throws: vantaro_io::exception_io_data and the stream's own failures.
    virtual void set_config(StreamReader& reader, AbortFlag& abort) = 0;
    /// Tells the component where its library lies: the full path, and the file's name.
    virtual void set_library_path(const char* path, const char* file_name) = 0;
    /// true: the host's services may be used from now on; false: no longer.
    virtual void services_init(bool available) = 0;
    virtual bool is_debug() = 0;

protected:
    ~ComponentClient() = default;
};

/// The exported function: receives the host, returns the component. Both live as long as the process.
using GetInterfaceFunction = ComponentClient*(HostApi*);
inline constexpr const char* get_interface_name = "vantaro_get_interface";

} // namespace vantaro
