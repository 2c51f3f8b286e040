// The host's command line: arguments go to the handlers that components register, and files to the handler
// that asked for them.
//
//     ArgumentDistributor distributor(host, messages_shown);
//     for (const std::string& argument : arguments)
//         distributor.offer(argument);
//     distributor.finish();
//
// Main thread only.
#pragma once

#include "host/api/registered_services.h"
#include "vantaro/application/host.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantaro::core {

class ArgumentDistributor {
public:
    /// `messages_shown` counts the messages that have been shown: an argument that makes a handler show one
    /// (a help text) is no file.
    ArgumentDistributor(Host& host, std::function<std::size_t()> messages_shown)
        : host_(host), messages_shown_(std::move(messages_shown)) {}

    /// Updates that the argument leads to are about the argument that a handler took.
    void offer(const std::string& argument);
    /// There are no more arguments.
    void finish();

    /// Whether some handler took an argument or showed a message.
    bool has_taken_any() const { return has_taken_any_; }
    /// Whether something came of some argument that was taken. What nothing came of is reported to the host
    /// as undone: an argument that wants files and gets none, or none with a track.
    bool has_done_any() const { return has_done_any_; }
    /// The files that no handler asked for.
    const std::vector<std::string>& left_over() const { return left_over_; }

private:
    /// A handler that wants files.
    struct Collector {
        Ref<CommandLineHandler> handler;
        std::string argument;
        bool has_files = false;
        TagIO::Resolved resolved_before;
    };

    bool offer_as_token(const std::string& argument);
    void hand_over_file(const std::string& argument);
    /// Reports what keeps the collector from its work, if anything.
    void look_at_files(const Collector& collector);

    Host& host_;
    std::function<std::size_t()> messages_shown_;
    std::optional<Collector> collector_;
    bool has_taken_any_ = false;
    bool has_done_any_ = false;
    std::vector<std::string> left_over_;
};

} // namespace vantaro::core
