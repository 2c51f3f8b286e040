#include "vantaro/terminal/failure_lines.h"

namespace vantaro::core {

namespace {

constexpr std::size_t most_named = 5; // of each reason
constexpr std::size_t most_reasons = 100;

} // namespace

void FailureLines::add(const std::string& name, const std::string& reason) {
    if (sums_up_ && (counts_.contains(reason) || counts_.size() < most_reasons)
        && ++counts_[reason] > most_named)
        return;
    terminal_.line(name + ": " + reason);
}

void FailureLines::end() {
    for (const auto& [reason, count] : counts_)
        if (count > most_named)
            terminal_.line("and " + std::to_string(count - most_named) + " more: " + reason);
    counts_.clear();
}

} // namespace vantaro::core
