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
    if (!taker)
        return messages_shown_() != shown_before;
    finish();
    if (result == CommandLineHandler::Result::taken_wants_files)
        collector_ = std::move(taker);
    return true;
}

void ArgumentDistributor::hand_over_file(const std::string& argument) {
    std::error_code error;
    if (collector_->wants_directories() || !std::filesystem::is_directory(argument, error)) {
        collector_->on_file(argument.c_str());
        return;
    }
    try {
        AbortSignal abort; // never set
        TracksTo tracks(*collector_);
        host_.tag_io().resolve_location(argument.c_str(), tracks, abort);
    } catch (const std::exception& failure) {
        host_.report(argument + ": " + failure.what());
    }
}

void ArgumentDistributor::finish() {
    if (const Ref<CommandLineHandler> collector = std::exchange(collector_, {}))
        collector->on_files_done();
}

} // namespace vantaro::core
