#include "tests/support/fake_host.h"

#include <algorithm>
#include <deque>
#include <set>
#include <sstream>

namespace vantaro::test {

namespace {

/// Hosts stay until the process ends: the component knows a host by its address, which must not come twice.
FakeHost& new_host() {
    static std::deque<FakeHost> hosts;
    return hosts.emplace_back();
}

class Held final : public HeapService<TrackInfoHolder> {
public:
    explicit Held(const TrackInfoRecord& tags) : tags_(tags) {}
    const TrackInfo& info() const override { return tags_; }
    FileStats stats() const override { return {}; }
    bool is_partial() const override { return false; }

private:
    const TrackInfoRecord tags_;
};

class Console final : public Noting<HostConsole> {
public:
    using Noting::Noting;
    void print(const char* text, std::size_t length) override { host_.note(std::string(text, length)); }
};

class Message final : public Noting<PopupMessage> {
public:
    using Noting::Noting;
    void show(const char* text, std::size_t length, const char* title, std::uint32_t) override {
        host_.note(std::string("showed ") + title + ": " + std::string(text, length));
    }
};

class Question final : public Noting<PopupQuestion> {
public:
    Question(FakeHost& host, const std::uint32_t& answer) : Noting(host), answer_(answer) {}
    std::uint32_t ask(const Request& request) override {
        std::string event = std::string("asked ") + request.title + ": " + request.message;
        for (const auto& [bit, name] : {std::pair(button::ok, " [ok]"), {button::cancel, " [cancel]"}})
            event += request.buttons & bit ? name : "";
        host_.note(event + (request.parent ? " in a window" : ""));
        return answer_;
    }

private:
    const std::uint32_t& answer_;
};

} // namespace

void FakeHost::load(ServiceRecord* head) {
    for (ServiceRecord* record = head; record; record = record->next())
        classes_[record->class_guid()].makers.push_back(
            [record](ServiceBase*& out) { record->create_instance(out); });
}

void FakeHost::create_service(ServiceClass* service_class, std::size_t index, ServiceBase*& out) {
    ++created_;
    if (index >= service_class->makers.size())
        throw exception_service_not_found();
    service_class->makers[index](out);
}

bool FakeTrack::get_info(TrackInfoHolder*& out) {
    if (!is_held)
        return false;
    const auto previous = Ref<TrackInfoHolder>::adopt(out);
    out = make_service<Held>(tags).detach();
    return true;
}

FakeTrack& FakeTagIO::track(const std::string& path) {
    Ref<FakeTrack>& track = tracks_[path];
    if (!track)
        track = make_service<FakeTrack>(path);
    return *track;
}

std::vector<Ref<TrackHandle>> FakeTagIO::tracks(const std::string& paths) {
    std::vector<Ref<TrackHandle>> list;
    std::istringstream words(paths);
    for (std::string path; words >> path;)
        list.emplace_back(&track(path));
    return list;
}

void FakeTagIO::tell_changed(const std::string& paths) {
    std::vector<TrackHandle*> changed;
    for (const Ref<TrackHandle>& track : tracks(paths))
        changed.push_back(track.get());
    std::ranges::sort(changed);
    for (TagChangeListener* listener : std::vector(listeners_))
        listener->tags_changed(changed.data(), changed.size());
}

void FakeTagIO::resolve_location(const char* location, TrackSink& out, AbortFlag&) {
    const auto found = locations_.find(location);
    if (found == locations_.end())
        throw vantaro_io::exception_io_not_found();
    for (const Ref<TrackHandle>& track : tracks(found->second)) {
        if (std::string_view(track->path()) == "!")
            throw vantaro_io::exception_io_data();
        out.add(track.get());
    }
}

void FakeTagIO::update_async(TrackHandle* const* tracks, std::size_t count, TrackFilter* filter,
                             WindowHandle parent, std::uint32_t flags, CompletionNotify* notify) {
    std::vector<Ref<FakeTrack>> list;
    std::string event = "update of";
    for (std::size_t i = 0; i < count; ++i) {
        list.emplace_back(static_cast<FakeTrack*>(tracks[i]));
        event.append(" ").append(tracks[i]->path());
    }
    event += parent == host_.main_window() ? ", main window" : parent ? ", window" : ", no window";
    host_.note(event + ", flags " + std::to_string(flags) + (notify ? ", watched" : ""));
    waiting_.push_back([this, list, filter = Ref(filter), notify = Ref(notify)] {
        std::uint32_t outcome = update_result::completed;
        std::set<FakeTrack*> done;
        for (const Ref<FakeTrack>& track : list) {
            if (!done.insert(track.get()).second)
                continue;
            TrackInfoRecord edited(track->tags);
            try {
                if (filter->apply(track.get(), {}, edited))
                    track->tags = edited;
            } catch (const std::exception& error) {
                host_.note(std::string(track->path()) + " failed: " + error.what());
                outcome = update_result::completed_with_errors;
            }
        }
        if (notify)
            notify->notify(result.value_or(outcome));
    });
    if (!is_late_)
        std::exchange(waiting_, {}).front()();
}

void FakeTagIO::carry_out_updates_late() {
    is_late_ = true;
    for (const auto& update : std::exchange(waiting_, {}))
        update();
}

WithHost::WithHost() : host_(new_host()) {
    host_.offer<HostTagIO>(tag_io_reference_);
    host_.offer<HostConsole>(make_service<Console>(host_));
    host_.offer<PopupMessage>(make_service<Message>(host_));
    host_.offer<PopupQuestion>(make_service<Question>(host_, answer_));
    quorvex::set_host(&host_);
    quorvex::set_services_available(true);
}

WithHost::~WithHost() {
    quorvex::set_services_available(false);
    host_.withdraw_all();
}

} // namespace vantaro::test
