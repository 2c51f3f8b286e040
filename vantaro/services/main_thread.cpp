#include "vantaro/services/main_thread.h"

#include <QCoreApplication>

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace vantaro::core {

namespace {

int make_counter() {
    const int counter = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE);
    if (counter < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    return counter;
}

} // namespace

MainThread::MainThread(std::function<void(const std::string&)> report)
    : report_(std::move(report)), posted_(make_counter()), notifier_(posted_, QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, [this] { run_next(); });
}

MainThread::~MainThread() {
    notifier_.setEnabled(false);
    ::close(posted_);
}

void MainThread::post(MainThreadCall* call) {
    post([held = Ref<MainThreadCall>(call)] { held->run(); });
}

void MainThread::post(std::function<void()> call) {
    {
        const std::lock_guard lock(mutex_);
        calls_.push_back(std::move(call));
    }
    const std::uint64_t one = 1;
    // Cannot fail: the counter is far from full and the descriptor is ours.
    [[maybe_unused]] const auto written = ::write(posted_, &one, sizeof one);
}

// One call at a time, so that those behind it run also while it is inside an event loop of its own.
void MainThread::run_next() {
    std::uint64_t one = 0;
    if (::read(posted_, &one, sizeof one) != sizeof one)
        return;
    std::function<void()> call;
    {
        const std::lock_guard lock(mutex_);
        call = std::move(calls_.front());
        calls_.pop_front();
    }
    try {
        call();
    } catch (const std::exception& error) {
        report_(error.what());
    }
}

bool MainThread::is_current() const {
    return std::this_thread::get_id() == main_thread_;
}

void MainThread::run_until(const std::function<bool()>& done) {
    while (!done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace vantaro::core
