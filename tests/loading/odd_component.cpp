// A component of somebody else's with everything that a host has to be ready for: it is built without type
// information, brings services that the host has itself, calls itself wrongly installed, and says on the
// console that its services end. "/shout" writes the titles of the tracks that follow in capitals.

#include "host/api/host_api.h"
#include "host/api/registered_services.h"
#include "host/api/system.h"
#include "host/api/tag_io.h"
#include "host/api/user_interaction.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <vector>

namespace {

using namespace vantaro;

HostApi* host = nullptr;

template <class I>
Ref<I> service() {
    ServiceBase* found = nullptr;
    host->create_service(host->find_service_class(I::class_guid), 0, found);
    return Ref<I>::adopt(static_cast<I*>(found));
}

class Shout final : public HeapService<TrackFilter> {
public:
    bool apply(TrackHandle*, const FileStats&, TrackInfo& info) override {
        std::string title = info.value(info.find_field("TITLE"), 0);
        std::ranges::transform(title, title.begin(),
                               [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        info.set_field("TITLE", title.c_str());
        return true;
    }
};

class Handler final : public HeapService<CommandLineHandler> {
public:
    Result on_token(const char* text) override {
        return std::string(text) == "/shout" ? Result::taken_wants_files : Result::not_taken;
    }
    void on_file(const char*) override {}
    void on_track(TrackHandle* track) override { tracks_.push_back(track); }
    void on_files_done() override {
        const auto tag_io = service<HostTagIO>();
        query_interface<HostTagIOUpdate>(*tag_io)->update_async(
            tracks_.data(), tracks_.size(), make_service<Shout>().get(), nullptr, 0, nullptr);
    }
    bool wants_directories() override { return false; }

private:
    std::vector<TrackHandle*> tracks_;
};

class Message final : public StaticService<PopupMessage> {
public:
    void show(const char*, std::size_t, const char*, std::uint32_t) override {}
};

class Digest final : public StaticService<DigestService> {
public:
    DigestState* initialise() override { return nullptr; }
    Guid digest(const void*, std::size_t) override { return {}; }
};

class Check final : public StaticService<InstallationCheck> {
public:
    bool is_installed_correctly() override { return false; }
};

template <class I, class Service>
class Single final : public ServiceRecord {
public:
    explicit Single(ServiceRecord* next) : ServiceRecord(next, I::class_guid) {}
    void create_instance(ServiceBase*& out) override { service_.query(out, I::class_guid); }

private:
    Service service_;
};

class HandlerRecord final : public ServiceRecord {
public:
    explicit HandlerRecord(ServiceRecord* next) : ServiceRecord(next, CommandLineHandler::class_guid) {}
    void create_instance(ServiceBase*& out) override { out = make_service<Handler>().detach(); }
};

class Client final : public ComponentClient {
public:
    std::uint32_t get_version() override { return component_interface_version; }
    ServiceRecord* get_service_list() override { return &handler_; }
    void get_config(StreamWriter&, AbortFlag&) override {}
    void set_config(StreamReader&, AbortFlag&) override {}
    void set_library_path(const char*, const char*) override {}
    void services_init(bool available) override {
        const std::string line = "The services end";
        if (!available)
            service<HostConsole>()->print(line.data(), line.size());
    }
    bool is_debug() override { return false; }

private:
    Single<InstallationCheck, Check> check_{nullptr};
    Single<DigestService, Digest> digest_{&check_};
    Single<PopupMessage, Message> message_{&digest_};
    HandlerRecord handler_{&message_};
};

Client client;

} // namespace

extern "C" __attribute__((visibility("default"))) ComponentClient* vantaro_get_interface(HostApi* api) {
    host = api;
    return &client;
}
