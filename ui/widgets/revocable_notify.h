// RevocableNotify: a CompletionNotify for a window, which may go before it is called.
//
//     run_notify_.renew([this](std::uint32_t code) { ended(code); });
//     run_script(script, tracks, this, run_notify_.get());
//
// Main thread.
#pragma once

#include "host/api/tag_io.h"

#include <functional>
#include <memory>
#include <string>

namespace quorvex {

class RevocableNotify {
public:
    using Call = std::function<void(std::uint32_t code)>;
    /// Takes what an update tells of itself before.
    using Summarise = std::function<void(const char* text)>;

    RevocableNotify() = default;
    /// Whoever still holds the notify calls into nothing from now on.
    ~RevocableNotify() { revoke(); }
    RevocableNotify(const RevocableNotify&) = delete;
    RevocableNotify& operator=(const RevocableNotify&) = delete;

    /// Makes a new notify in place of the last, which no longer does anything. `activity`: what it is for,
    /// where it is for an update.
    void renew(Call call, Summarise summarise = {}, std::string activity = {}) {
        revoke();
        notify_ = vantaro::make_service<Notify>(std::move(call), std::move(summarise), std::move(activity));
    }
    vantaro::CompletionNotify* get() const { return notify_.get(); }

private:
    class Notify final : public vantaro::HeapService<vantaro::UpdateNotify> {
    public:
        Notify(Call call, Summarise summarise, std::string activity)
            : call_(std::make_shared<Call>(std::move(call))), summarise_(std::move(summarise)),
              activity_(std::move(activity)) {}
        void notify(std::uint32_t code) override {
            // The call may end the window, and this with it.
            if (const std::shared_ptr<Call> call = call_)
                (*call)(code);
        }
        void summarise(const char* text) override {
            if (summarise_)
                summarise_(text);
        }
        void get_activity(vantaro::TextSink& out) override { vantaro::set_text(out, activity_); }
        void revoke() {
            call_.reset();
            summarise_ = {};
        }

    private:
        std::shared_ptr<Call> call_;
        Summarise summarise_;
        const std::string activity_;
    };

    void revoke() {
        if (notify_)
            notify_->revoke();
    }

    vantaro::Ref<Notify> notify_;
};

} // namespace quorvex
