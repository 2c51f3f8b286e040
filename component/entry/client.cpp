#include "component/entry/client.h"

#include "component/configuration.h"
#include "component/entry/registration.h"
#include "component/own_services.h"
#include "component/service_list.h"
#include "engine/background_threads.h"
#include "host/access.h"

namespace quorvex {

namespace {

class Client final : public vantaro::ComponentClient {
public:
    std::uint32_t get_version() override { return vantaro::component_interface_version; }
    vantaro::ServiceRecord* get_service_list() override { return service_list_head(); }
    void get_config(vantaro::StreamWriter& writer, vantaro::AbortFlag& abort) override {
        write_configuration(writer, abort);
    }
    void set_config(vantaro::StreamReader& reader, vantaro::AbortFlag& abort) override {
        read_configuration(reader, abort);
    }
    void set_library_path(const char* path, const char* file_name) override {
        quorvex::set_library_path(path, file_name);
    }
    void services_init(bool available) override {
        set_services_available(available);
        if (!available)
            join_background_threads();
    }
    bool is_debug() override { return false; }
};

Client client;

} // namespace

} // namespace quorvex

vantaro::ComponentClient* vantaro_get_interface(vantaro::HostApi* host) {
    quorvex::link_registration();
    quorvex::set_host(host);
    return &quorvex::client;
}
