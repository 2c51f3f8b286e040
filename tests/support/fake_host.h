// A host made of memory: it offers the services that a test hands it, and notes what is asked of them.
//
//     class Run : public WithHost { ... };
//     TEST_F(Run, EditsTheTracks) {
//         run_script(script, tag_io_.tracks("a b"), nullptr, notify_.get());
//         EXPECT_EQ(host_.take_events(), "update of a b, no window, flags 8, watched\nnotified 0");
//         EXPECT_EQ(tags_text(tag_io_.track("a").tags), "GENRE=[Jazz]");
//     }
#pragma once

#include "host/access.h"
#include "host/api/tag_io.h"
#include "host/api/track_info_record.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// The host API leaves it to the host what this is.
struct vantaro::ServiceClass {
    std::vector<std::function<void(ServiceBase*&)>> makers;
};

namespace vantaro::test {

/// Its main thread is the one that made it.
class FakeHost final : public HostApi {
public:
    /// Offers one more service, behind the others of its class.
    template <class I>
    void offer(const Ref<I>& service) {
        classes_[I::class_guid].makers.push_back(
            [service](ServiceBase*& out) { EXPECT_TRUE(service->query(out, I::class_guid)); });
    }
    /// Offers what a component registers, in the order of its list.
    void load(ServiceRecord* head);
    void withdraw_all() { classes_.clear(); }

    void note(const std::string& event) { events_ += (events_.empty() ? "" : "\n") + event; }
    /// What has been noted since the last call, a line each.
    std::string take_events() { return std::exchange(events_, {}); }
    /// How many services it has been asked to create.
    int created() const { return created_; }

    ServiceClass* find_service_class(const Guid& class_guid) override { return &classes_[class_guid]; }
    void create_service(ServiceClass* service_class, std::size_t index, ServiceBase*& out) override;
    std::size_t count_services(ServiceClass* service_class) override { return service_class->makers.size(); }
    WindowHandle main_window() override { return this; }
    void ensure_main_thread() override { EXPECT_TRUE(is_main_thread()); }
    bool is_main_thread() override { return std::this_thread::get_id() == main_thread_; }

private:
    std::map<Guid, ServiceClass> classes_;
    std::string events_;
    int created_ = 0;
    const std::thread::id main_thread_ = std::this_thread::get_id();
};

/// A service that notes its calls.
template <class I>
class Noting : public HeapService<I> {
public:
    explicit Noting(FakeHost& host) : host_(host) {}

protected:
    FakeHost& host_;
};

class FakeNotify final : public Noting<CompletionNotify> {
public:
    using Noting::Noting;
    void notify(std::uint32_t code) override { host_.note("notified " + std::to_string(code)); }
};

/// A track that formats every pattern as its title.
class FakeTrack final : public HeapService<TrackHandle> {
public:
    explicit FakeTrack(std::string path) : path_(std::move(path)) {}
    const char* path() const override { return path_.c_str(); }
    std::uint32_t subsong() const override { return 0; }
    bool get_info(TrackInfoHolder*& out) override;
    void format_title(TitleFormatHook*, TextSink& out, TitleFormatScript&, TitleFormatTextFilter*) override {
        set_text(out, title(tags));
    }
    void format_title_from(const TrackInfo& info, TitleFormatHook*, TextSink& out, TitleFormatScript&,
                           TitleFormatTextFilter*) override {
        set_text(out, title(info));
    }

    /// What the file has, and whether the host holds it.
    TrackInfoRecord tags;
    bool is_held = false;

private:
    static std::string title(const TrackInfo& info) {
        const std::size_t field = info.find_field("TITLE");
        return field == no_field ? "" : info.value(field, 0);
    }

    const std::string path_;
};

class FakeTagIO final : public Noting<HostTagIOUpdate> {
public:
    using Noting::Noting;

    /// The track of that path: always the same object.
    FakeTrack& track(const std::string& path);
    /// The tracks of these paths, which stand between blanks.
    std::vector<Ref<TrackHandle>> tracks(const std::string& paths);
    /// Lets a location stand for these tracks. At "!" in place of a path reading the location fails.
    void put(const std::string& location, const std::string& paths) { locations_[location] = paths; }
    /// Carries out the updates that wait; those to come wait for the next call.
    void carry_out_updates_late();

    /// A location that was not put is not found.
    void resolve_location(const char* location, TrackSink& out, AbortFlag& abort) override;
    void add_change_listener(TagChangeListener* listener) override { listeners_.push_back(listener); }
    void remove_change_listener(TagChangeListener* listener) override { std::erase(listeners_, listener); }
    std::size_t listener_count() const { return listeners_.size(); }
    /// Tells the listeners that the held tags of these tracks have changed.
    void tell_changed(const std::string& paths);
    /// What updates report, whatever becomes of the tracks; nothing: as it was.
    std::optional<std::uint32_t> result;
    /// Edits every different track in the order of the list, then reports the result; at once unless updates
    /// are carried out late.
    void update_async(TrackHandle* const* tracks, std::size_t count, TrackFilter* filter, WindowHandle parent,
                      std::uint32_t flags, CompletionNotify* notify) override;

private:
    std::map<std::string, Ref<FakeTrack>> tracks_;
    std::map<std::string, std::string> locations_;
    std::vector<std::function<void()>> waiting_;
    std::vector<TagChangeListener*> listeners_;
    bool is_late_ = false;
};

/// How many references there are to an object.
inline std::uint32_t references(ServiceBase& object) {
    object.add_ref();
    return object.release();
}

/// A host of its own for every test, with a console, messages, questions and HostTagIO, whose services are
/// available.
class WithHost : public testing::Test {
protected:
    WithHost();
    ~WithHost() override;

    FakeHost& host_;
    const Ref<FakeTagIO> tag_io_reference_ = make_service<FakeTagIO>(host_);
    FakeTagIO& tag_io_ = *tag_io_reference_;
    const Ref<FakeNotify> notify_ = make_service<FakeNotify>(host_);
    /// The answer to every question.
    std::uint32_t answer_ = 0;
};

} // namespace vantaro::test
