// Counts what components say is not done, and passes on why.
//
//     UndoneWorkNotes undone([&](const std::string& line) { console.print(line.data(), line.size()); });
//     registry.add_only<UndoneWork>(undone, "notes of work that is not done");
//
// Any thread.
#pragma once

#include "host/api/user_interaction.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>

namespace vantaro::core {

class UndoneWorkNotes final : public StaticService<UndoneWork> {
public:
    explicit UndoneWorkNotes(std::function<void(const std::string& line)> report)
        : report_(std::move(report)) {}

    void note(const char* why) override {
        ++count_;
        if (*why != '\0')
            report_(why);
    }
    std::size_t count() const { return count_; }

private:
    const std::function<void(const std::string& line)> report_;
    std::atomic<std::size_t> count_{0};
};

} // namespace vantaro::core
