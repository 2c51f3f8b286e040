// The built-in kinds as scripts use them, in a host made of memory that has what they ask of a host.
//
//     EXPECT_EQ(edited(remove_field, "COMMENT", "A=[x] COMMENT=[y]"), "A=[x]");
#pragma once

#include "script/action_registry.h"
#include "tests/component/component_fixture.h"
#include "vantaro/services/digest.h"
#include "vantaro/titleformat/title_format.h"

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace quorvex::test {

/// Notes who registers, and tells the time when a test says so.
class FakeClock final : public Noting<vantaro::ClockService> {
public:
    using Noting::Noting;
    void register_callback(vantaro::ClockCallback* callback, std::uint64_t period) override {
        host_.note("clock every " + std::to_string(period));
        callbacks_.push_back(callback);
    }
    void unregister_callback(vantaro::ClockCallback* callback) override {
        host_.note("clock left");
        EXPECT_EQ(std::erase(callbacks_, callback), 1U);
    }
    void tell(std::uint64_t time) {
        for (vantaro::ClockCallback* callback : callbacks_)
            callback->on_time(time);
    }

private:
    std::vector<vantaro::ClockCallback*> callbacks_;
};

class Western final : public vantaro::HeapService<vantaro::LegacyCodePage> {
public:
    void get_name(vantaro::TextSink& out) override { vantaro::set_text(out, "windows-1252"); }
};

class Kinds : public Component {
protected:
    Kinds() {
        host_.offer(Ref<vantaro::TitleFormatCompiler>(&title_formatting_));
        host_.offer(Ref<vantaro::DigestService>(&digests_));
        host_.offer<vantaro::ClockService>(clock_);
        host_.offer<vantaro::LegacyCodePage>(vantaro::make_service<Western>());
    }

    Ref<Action> action(const Guid& kind, const std::string& parameters) {
        const Ref<Action> made = instantiate({kind, parameters}, *notify_);
        if (!made)
            throw std::invalid_argument("rejected: " + parameters);
        return made;
    }
    static std::string description(Action& action) {
        return vantaro::text_of([&](vantaro::TextSink& out) { action.get_description(out); });
    }
    static std::string parameters(Action& action) {
        return vantaro::text_of([&](vantaro::TextSink& out) { action.get_parameter_text(out); });
    }
    /// A new action of the kind, as the parameter text of its default settings.
    std::string defaults(const Guid& kind) {
        return parameters(*Ref<Action>::adopt(find_action_type(kind)->create(notify_.get())));
    }

    /// What the action makes of the tags of `track_`.
    std::string edited(const Guid& kind, const std::string& text, std::string_view before,
                       std::uint32_t index = 0, std::uint32_t total = 1) {
        vantaro::TrackInfoRecord info = tags(before);
        action(kind, text)->apply(&track_, info, index, total);
        return tags_text(info);
    }

    struct Edit {
        std::string parameters;
        std::string before;
        std::string after;
    };
    void expect_edits(const Guid& kind, std::initializer_list<Edit> rows) {
        for (const Edit& row : rows)
            EXPECT_EQ(edited(kind, row.parameters, row.before), row.after)
                << row.parameters << " on " << row.before;
    }

    struct Text {
        std::string parameters;
        std::string description;
    };
    /// The actions write the same text back, any number of times, and are described so.
    void expect_texts(const Guid& kind, std::initializer_list<Text> rows) {
        for (const Text& row : rows) {
            const Ref<Action> made = action(kind, row.parameters);
            EXPECT_EQ(description(*made), row.description);
            EXPECT_EQ(parameters(*made), row.parameters);
            EXPECT_EQ(parameters(*made), row.parameters);
        }
    }
    void expect_rejected(const Guid& kind, std::initializer_list<const char*> texts) {
        for (const char* text : texts)
            EXPECT_EQ(failure_of([&] {
                          Ref<Action>::adopt(find_action_type(kind)->create_from_text(notify_.get(), text));
                      }),
                      "Unsupported format or corrupted file")
                << text;
    }

    vantaro::core::TitleFormatting title_formatting_;
    vantaro::core::Md5Service digests_;
    const Ref<FakeClock> clock_ = vantaro::make_service<FakeClock>(host_);
    vantaro::core::Track track_{"/music/Band/Record/07 - Song.mp3", 0};
};

} // namespace quorvex::test
