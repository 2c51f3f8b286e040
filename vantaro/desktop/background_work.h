// Something that takes a while, done on a thread of its own, and what follows from it, done on the main
// thread.
//
//     BackgroundWork work(report);
//     work.start([paths](const AbortFlag& abort) {
//         auto found = find_all(paths, abort);
//         return [this, found] { show(found); };
//     });
//
// Main thread, where an event loop runs.
#pragma once

#include "vantaro/services/abort_signal.h"

#include <QObject>

#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace vantaro::core {

class BackgroundWork {
public:
    using Finish = std::function<void()>;
    /// Called on the thread; returns what is called on the main thread afterwards. It ends early when the
    /// flag is set.
    using Work = std::function<Finish(const AbortFlag& abort)>;

    /// `report` takes, on the main thread, the text of an exception that the work ended with.
    explicit BackgroundWork(std::function<void(const std::string& line)> report);
    /// Cancels the work and waits for its end; what follows from it is not done.
    ~BackgroundWork();

    /// Requires: !is_running().
    void start(Work work);
    /// From start until just before what follows is done.
    bool is_running() const { return is_running_; }
    /// Asks the work to end early. What follows from it is still done.
    void cancel();
    /// Does something on the main thread, unless this object has gone by then. Called by the work.
    void post(std::function<void()> call);

private:
    const std::function<void(const std::string&)> report_;
    bool is_running_ = false;
    std::unique_ptr<AbortSignal> abort_;
    QObject receiver_; // posted calls go with it
    std::jthread thread_;
};

} // namespace vantaro::core
