// The options that every program with the toolkit has: "-style fusion", "-platform offscreen", "-session ID".
//
//     ToolkitOptions toolkit(argc, argv, options);   // options: the program's own
//     options.parse(toolkit.rest_count(), toolkit.rest());
//
// They are looked for in front of the first file or command only: behind it, what looks like one may be
// followed by the name of a file, which would be taken for the option's value.
#pragma once

#include <CLI/CLI.hpp>

#include <vector>

namespace vantaro::core {

class ToolkitOptions {
public:
    /// `argv` outlives the object.
    ToolkitOptions(int argc, char** argv, const CLI::App& own);

    /// The command line without them, for the program.
    int rest_count() const { return static_cast<int>(rest_.size()) - 1; }
    char** rest() { return rest_.data(); }
    /// The command line with nothing but them, for the toolkit, which changes it.
    int& count() { return count_; }
    char** arguments() { return arguments_.data(); }

    /// Whether one of them says where windows go, whatever the environment says.
    bool names_display() const { return names_display_; }

private:
    // As main() gets them, with nullptr at the end.
    std::vector<char*> arguments_;
    std::vector<char*> rest_;
    int count_ = 0;
    bool names_display_ = false;
};

} // namespace vantaro::core
