// The component as its host meets it, with its services in a host made of memory.
#pragma once

#include "component/entry/client.h"
#include "host/api/memory_stream.h"
#include "tests/support/failures.h"
#include "tests/support/fake_host.h"
#include "tests/support/short_forms.h"

namespace quorvex::test {

using namespace vantaro::test;

/// A test finds the component as it is after loading, and leaves it so.
class Component : public WithHost {
protected:
    Component() : client_(*vantaro_get_interface(&host_)) {
        host_.load(client_.get_service_list());
        initial();
    }
    ~Component() override {
        read(initial());
        client_.set_library_path("", "");
    }

    std::string written() {
        vantaro::MemoryWriter writer;
        client_.get_config(writer, run_on);
        return writer.bytes();
    }
    void read(std::string_view bytes) {
        vantaro::MemoryReader reader(bytes);
        client_.set_config(reader, run_on);
    }
    /// What a component writes that has read nothing.
    const std::string& initial() {
        static const std::string bytes = written();
        return bytes;
    }

    vantaro::ComponentClient& client_;
};

} // namespace quorvex::test
