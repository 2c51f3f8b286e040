// The command-line handler: "/tag:" commands, applied to the files named after them.
//
//     vantaro '/tag:artist=A\B;comment=;AUTOTRACKNUMBER' a.mp3 b.flac
//
// Main thread; the filter that it hands to the host works on copies of its own.
#pragma once

#include "engine/run_index.h"
#include "host/api/registered_services.h"

#include <string>
#include <vector>

namespace quorvex {

class TagCommandLine final : public vantaro::HeapService<vantaro::CommandLineHandler> {
public:
    Result on_token(const char* text) override;
    void on_file(const char* location) override;
    void on_files_done() override;
    bool wants_directories() override { return true; }
    void on_track(vantaro::TrackHandle* track) override;

private:
    TrackList files_;
    std::vector<std::string> commands_;
};

} // namespace quorvex
