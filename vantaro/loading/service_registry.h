// The services that the host knows: its own and those of the components, by class.
//
//     registry.add(record);
//     ServiceClass* consoles = registry.find(HostConsole::class_guid);
//
// Services are added on the main thread while the host starts; after that any thread may look up.
#pragma once

#include "host/api/host_api.h"

#include <map>
#include <memory>
#include <mutex>
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
    /// `record` outlives the registry.
    void add(ServiceRecord& record);
    /// Registers a service of the host's own under its interface I.
    template <class I>
    void add_own(I& service) {
        own_records_.push_back(std::make_unique<OwnServiceRecord>(service, I::class_guid));
        add(*own_records_.back());
    }

    /// Never nullptr; the same object for the same class as long as the registry lives.
    ServiceClass* find(const Guid& class_guid);

private:
    std::mutex mutex_; // guards classes_, whose elements stay where they are
    std::map<Guid, ServiceClass> classes_;
    std::vector<std::unique_ptr<OwnServiceRecord>> own_records_;
};

} // namespace core
} // namespace vantaro
