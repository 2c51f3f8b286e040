// What has failed, a line each; a person at a terminal is told the first few of each reason, and how many
// more there are.
//
//     FailureLines failures(terminal, FailureLines::Told::summed_up);
//     failures.add("/m/a.flac", "Access denied");       // /m/a.flac: Access denied
//     failures.end();                                   // and 995 more: Access denied
//
// One thread at a time.
#pragma once

#include "vantaro/terminal/terminal.h"

#include <cstddef>
#include <map>
#include <string>

namespace vantaro::core {

class FailureLines {
public:
    /// Where standard error is no terminal, they are always told one by one.
    enum class Told { one_by_one, summed_up };

    FailureLines(Terminal& terminal, Told told)
        : terminal_(terminal), sums_up_(told == Told::summed_up && terminal.is_interactive()) {}

    void add(const std::string& name, const std::string& reason);
    /// Tells how many were not named.
    void end();

private:
    Terminal& terminal_;
    const bool sums_up_;
    std::map<std::string, std::size_t> counts_; // by reason
};

} // namespace vantaro::core
