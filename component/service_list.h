// The services that the component registers: records that link themselves, while the library is being loaded,
// at the head of one list that the host walks.
//
//     SingleService<ComponentVersionRecord, vantaro::ComponentVersion> version_record;   // a static object
//     MultiService<TagCommandLine, vantaro::CommandLineHandler> command_line;
//
// All records are constructed in one file (component/entry/registration.cpp), so their order is what that
// file says. After loading nothing changes any more; any thread may read.
#pragma once

#include "host/api/host_api.h"
#include "host/shared/failure.h"

namespace quorvex {

/// Head of the list: the record linked last.
vantaro::ServiceRecord* service_list_head();

/// A record that is linked when it is constructed.
class LinkedServiceRecord : public vantaro::ServiceRecord {
protected:
    explicit LinkedServiceRecord(const vantaro::Guid& class_guid);
    ~LinkedServiceRecord() = default;
};

/// Hands out one object, which it holds, for every request.
template <class Service, class Interface>
class SingleService final : public LinkedServiceRecord {
public:
    template <class... Arguments>
    explicit SingleService(Arguments&&... arguments)
        : LinkedServiceRecord(Interface::class_guid), service_(std::forward<Arguments>(arguments)...) {}

    void create_instance(vantaro::ServiceBase*& out) override {
        if (!service_.query(out, Interface::class_guid))
            uBugCheck("a registered service refuses its own class");
    }

private:
    Service service_;
};

/// Makes a new object for every request.
template <class Service, class Interface>
class MultiService final : public LinkedServiceRecord {
public:
    MultiService() : LinkedServiceRecord(Interface::class_guid) {}

    void create_instance(vantaro::ServiceBase*& out) override {
        const auto service = vantaro::make_service<Service>();
        if (!service->query(out, Interface::class_guid))
            uBugCheck("a registered service refuses its own class");
    }
};

} // namespace quorvex
