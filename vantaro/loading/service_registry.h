// The services that the host knows: its own and those of the components, by class.
//
//     registry.add_only<DigestService>(digest, "digests");
//     registry.add(record, "/usr/lib/vantaro/components/example.dll");
//     ServiceClass* consoles = registry.find(HostConsole::class_guid);
//
// Services are added on the main thread while the host starts; after that any thread may look up.
#pragma once

#include "host/api/host_api.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro {

struct ServiceClass {
    /// In the order of enumeration. Not owned.
    std::vector<ServiceRecord*> records;
};

namespace core {

/// A service of the host's own, which outlives the registry.
class OwnServiceRecord final : public ServiceRecord {
public:
    OwnServiceRecord(ServiceBase& service, const Guid& class_id)
        : ServiceRecord(nullptr, class_guid_), service_(service), class_guid_(class_id) {}

    void create_instance(ServiceBase*& out) override { store_queried(out, &service_); }

private:
    ServiceBase& service_;
    Guid class_guid_;
};

class ServiceRegistry {
public:
    /// Registers a service of the component with that path, unless the host has one that has to be the only
    /// one of its class. Returns what that one is for; empty when the service was taken. `record` outlives
    /// the registry.
    std::string_view add(ServiceRecord& record, const std::string& component);
    /// Registers a service of the host's own under its interface I.
    template <class I>
    void add_own(I& service) {
        add_own_record(service, I::class_guid);
    }
    /// The same where whoever asks for the service relies on there being no other. `purpose` is a constant, a
    /// word or two for people.
    template <class I>
    void add_only(I& service, const char* purpose) {
        add_own_record(service, I::class_guid);
        only_ones_.emplace(I::class_guid, purpose);
    }
    /// The component that registered the service; empty for the host's own.
    const std::string& component_of(const ServiceRecord& record) const;

    /// Never nullptr; the same object for the same class as long as the registry lives.
    ServiceClass* find(const Guid& class_guid);

private:
    void add_own_record(ServiceBase& service, const Guid& class_guid);

    std::mutex mutex_; // guards classes_, whose elements stay where they are
    std::map<Guid, ServiceClass> classes_;
    std::map<Guid, const char*> only_ones_;
    std::map<const ServiceRecord*, std::string> components_;
    std::vector<std::unique_ptr<OwnServiceRecord>> own_records_;
};

} // namespace core
} // namespace vantaro
