#include "vantaro/application/argument_distributor.h"

#include <filesystem>
#include <system_error>

namespace vantaro::core {

namespace {

class TracksTo final : public TrackSink {
public:
    explicit TracksTo(CommandLineHandler& handler) : handler_(handler) {}
    void add(TrackHandle* track) override { handler_.on_track(track); }

private:
    CommandLineHandler& handler_;
};

} // namespace

void ArgumentDistributor::offer(const std::string& argument) {
    if (offer_as_token(argument))
        has_taken_any_ = true;
    else if (collector_)
        hand_over_file(argument);
    else
        left_over_.push_back(argument);
}

bool ArgumentDistributor::offer_as_token(const std::string& argument) {
    const std::size_t shown_before = messages_shown_();
    Ref<CommandLineHandler> taker;
    auto result = CommandLineHandler::Result::not_taken;
    // Every handler is a fresh one: asking the one that collects files would make it start over.
    host_.for_each_service<CommandLineHandler>([&](CommandLineHandler& handler) {
        if (taker)
            return;
        result = handler.on_token(argument.c_str());
        if (result != CommandLineHandler::Result::not_taken)
            taker = Ref<CommandLineHandler>(&handler);
    });
    if (!taker) {
        const bool has_shown = messages_shown_() != shown_before;
        has_done_any_ |= has_shown;
        return has_shown;
    }
    finish();
    if (result == CommandLineHandler::Result::taken_wants_files)
        collector_ = Collector{std::move(taker), argument, false, host_.tag_io().resolved()};
    else
        has_done_any_ = true;
    return true;
}

void ArgumentDistributor::hand_over_file(const std::string& argument) {
    CommandLineHandler& handler = *collector_->handler;
    collector_->has_files = true;
    std::error_code error;
    if (handler.wants_directories() || !std::filesystem::is_directory(argument, error)) {
        handler.on_file(argument.c_str());
        return;
    }
    try {
        AbortSignal abort; // never set
        TracksTo tracks(handler);
        host_.tag_io().resolve_location(argument.c_str(), tracks, abort);
    } catch (const std::exception& failure) {
        host_.report(argument + ": " + failure.what());
    }
}

void ArgumentDistributor::finish() {
    if (!collector_)
        return;
    const Collector collector = *std::exchange(collector_, {});
    const std::size_t undone_before = host_.undone_count();
    look_at_files(collector);
    host_.tag_io().set_activity(collector.argument);
    collector.handler->on_files_done();
    has_done_any_ |= host_.undone_count() == undone_before;
}

void ArgumentDistributor::look_at_files(const Collector& collector) {
    const TagIO::Resolved resolved = host_.tag_io().resolved();
    // A handler may have use for files without asking what tracks they are.
    const bool has_asked = resolved.locations > collector.resolved_before.locations;
    if (!collector.has_files)
        host_.report_undone(collector.argument + ": No files are named after it.");
    else if (has_asked && resolved.tracks == collector.resolved_before.tracks
             && !host_.tag_io().has_failures())
        host_.report_undone(collector.argument + ": There are no tracks in what is named after it.");
}

} // namespace vantaro::core
