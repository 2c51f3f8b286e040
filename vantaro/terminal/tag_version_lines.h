// Which files of an update got a tag of another version: the first few, and how many there were.
//
//     TagVersionLines versions;
//     versions.add(outcome);               // each
//     print_output(versions.text());       // ID3v2.3 became ID3v2.4 in 3 files:
//
// One thread at a time.
#pragma once

#include "vantaro/update/update_job.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vantaro::core {

class TagVersionLines {
public:
    void add(const TrackOutcome& outcome);
    /// Whole lines; empty when no version changed.
    std::string text() const;

private:
    struct Files {
        std::vector<std::string> named;
        std::size_t count = 0;
    };
    std::map<std::pair<std::string, std::string>, Files> changes_; // by the versions before and after
};

} // namespace vantaro::core
