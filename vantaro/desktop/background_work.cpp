#include "vantaro/desktop/background_work.h"

#include <QMetaObject>

#include <exception>

namespace vantaro::core {

BackgroundWork::BackgroundWork(std::function<void(const std::string& line)> report)
    : report_(std::move(report)) {}

BackgroundWork::~BackgroundWork() {
    cancel();
    // The thread is joined before the receiver of its calls goes: members end in reverse.
}

void BackgroundWork::start(Work work) {
    is_running_ = true;
    abort_ = std::make_unique<AbortSignal>();
    thread_ = std::jthread([this, work = std::move(work), &abort = *abort_] {
        Finish finish;
        try {
            finish = work(abort);
        } catch (const std::exception& error) {
            finish = [this, text = std::string(error.what())] { report_(text); };
        }
        post([this, finish = std::move(finish)] {
            thread_.join();
            is_running_ = false;
            if (finish)
                finish();
        });
    });
}

void BackgroundWork::cancel() {
    if (abort_)
        abort_->set();
}

void BackgroundWork::post(std::function<void()> call) {
    QMetaObject::invokeMethod(&receiver_, std::move(call), Qt::QueuedConnection);
}

} // namespace vantaro::core
