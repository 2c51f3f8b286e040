// "Format value from other fields...": sets a field to what a title-formatting pattern gives for the track.
// The pattern sees the tags as the actions before left them, and the fields of FieldProvider; while it holds
// %now%, the action follows the clock and tells its notify every second that its result has changed.
//
// Parameter text: the destination field, the pattern, a line each.
#pragma once

#include "actions/action_base.h"
#include "actions/title_script.h"
#include "host/api/system.h"

#include <mutex>

namespace quorvex {

class FormatValue final : public ActionBase<FormatValue> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{48F67226-8A33-409F-A0DF-FFB157DF1B7E}");
    static constexpr const char* menu_name = "Format value from other fields...";

    /// Starts with the pattern that was last confirmed in the settings dialog, and without the clock.
    static vantaro::Ref<Action> create(vantaro::CompletionNotify& notify);
    /// Throws: vantaro_io::exception_io_data when the text does not hold exactly one line feed.
    static vantaro::Ref<Action> create_from_text(vantaro::CompletionNotify& notify, std::string_view text);
    FormatValue(vantaro::CompletionNotify& notify, std::string_view destination, std::string_view pattern);
    ~FormatValue() override;

    void get_description(vantaro::TextSink& out) override;
    void get_parameter_text(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    /// Receives the time for the action that holds it.
    class Clock final : public vantaro::StaticService<vantaro::ClockCallback> {
    public:
        explicit Clock(FormatValue& action) : action_(action) {}
        void on_time(std::uint64_t time) override { action_.set_time(time); }

    private:
        FormatValue& action_;
    };

    void follow_clock_if_used();
    void leave_clock();
    void set_time(std::uint64_t time);

    std::string destination_;
    TitleScript script_;
    const Ref<vantaro::CompletionNotify> notify_;
    Clock clock_{*this};
    bool follows_clock_ = false;
    std::mutex mutex_; // guards time_
    std::uint64_t time_ = 0;
};

} // namespace quorvex
