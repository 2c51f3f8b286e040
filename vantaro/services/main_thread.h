// The main thread: running things on it, and waiting on it.
//
//     MainThread main_thread;                 // made on the main thread, after QCoreApplication
//     main_thread.post([&] { list.redraw(); });
//     main_thread.run_until([&] { return done; });
//
// post and is_current: any thread. The rest: the main thread.
#pragma once

#include "host/api/system.h"

#include <QSocketNotifier>

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace vantaro::core {

class MainThread final : public StaticService<MainThreadQueue> {
public:
    /// `report` takes one line about something that went wrong in a posted call.
    /// Throws: std::system_error when the system has no more file descriptors.
    explicit MainThread(std::function<void(const std::string&)> report);
    ~MainThread();

    void post(MainThreadCall* call) override;
    void post(std::function<void()> call);
    bool is_current() const;
    /// Handles events and posted calls until `done` says so; it is asked after each of them.
    void run_until(const std::function<bool()>& done);

private:
    void run_next();

    const std::thread::id main_thread_ = std::this_thread::get_id();
    std::function<void(const std::string&)> report_;
    const int posted_; // an eventfd: how many calls wait
    QSocketNotifier notifier_;
    std::mutex mutex_; // guards calls_
    std::deque<std::function<void()>> calls_;
};

} // namespace vantaro::core
