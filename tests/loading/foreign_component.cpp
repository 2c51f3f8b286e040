// A component of somebody else's: it uses the boundary only, and adds one kind of action, which writes the
// title backwards. Built under several names to have the host load good and bad ones.

#include "host/api/exceptions.h"
#include "host/api/host_api.h"
#include "script/action.h"

#include <algorithm>
#include <string>

namespace {

using namespace vantaro;

constexpr Guid kind = guid("{12345678-9ABC-4DEF-8123-456789ABCDEF}");

class Backwards final : public HeapService<quorvex::Action> {
public:
    bool has_settings() override { return false; }
    void create_settings_dialog(WindowHandle, CompletionNotify*) override {}
    void get_description(TextSink& out) override { set_text(out, "Backwards"); }
    void get_parameter_text(TextSink& out) override { set_text(out, ""); }
    void apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) override {
        const std::size_t field = info.find_field("TITLE");
        if (field == no_field)
            return;
        std::string title = info.value(field, 0);
        if (title == "palindrome")
            throw vantaro_io::exception_io_data("a title of no use");
        std::ranges::reverse(title);
        info.set_field("TITLE", title.c_str());
    }
    Guid get_guid() override { return kind; }
    bool uses_group_key() override { return false; }
    Guid get_group_key(TrackHandle*) override { return {}; }
};

class BackwardsType final : public StaticService<quorvex::ActionType> {
public:
    Guid get_guid() override { return kind; }
    void get_name(TextSink& out) override { set_text(out, "Backwards"); }
    quorvex::Action* create(CompletionNotify*) override { return make_service<Backwards>().detach(); }
    quorvex::Action* create_from_text(CompletionNotify* notify, const char*) override {
        return create(notify);
    }
};

class Record final : public ServiceRecord {
public:
    Record() : ServiceRecord(nullptr, quorvex::ActionType::class_guid) {}
    void create_instance(ServiceBase*& out) override { type_.query(out, quorvex::ActionType::class_guid); }

private:
    BackwardsType type_;
};

class Client final : public ComponentClient {
public:
    std::uint32_t get_version() override { return FOREIGN_COMPONENT_VERSION; }
    ServiceRecord* get_service_list() override { return &record_; }
    void get_config(StreamWriter&, AbortFlag&) override {}
    void set_config(StreamReader&, AbortFlag&) override {}
    void set_library_path(const char*, const char*) override {}
    void services_init(bool) override {}
    bool is_debug() override { return false; }

private:
    Record record_;
};

Client client;

} // namespace

extern "C" __attribute__((visibility("default"))) ComponentClient* vantaro_get_interface(HostApi*) {
    return &client;
}
