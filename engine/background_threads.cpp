#include "engine/background_threads.h"

#include <atomic>
#include <list>
#include <memory>
#include <thread>

namespace quorvex {

namespace {

struct Background {
    std::shared_ptr<std::atomic<bool>> has_ended = std::make_shared<std::atomic<bool>>(false);
    std::jthread thread;
};

/// Touched on the main thread only.
std::list<Background>& threads() {
    static std::list<Background> all;
    return all;
}

} // namespace

void start_background_thread(std::function<void()> run) {
    threads().remove_if([](const Background& background) { return background.has_ended->load(); });
    Background background;
    background.thread = std::jthread([run = std::move(run), has_ended = background.has_ended] {
        run();
        *has_ended = true;
    });
    threads().push_back(std::move(background));
}

void join_background_threads() {
    threads().clear();
}

} // namespace quorvex
