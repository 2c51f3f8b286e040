// The standard streams of a program: that they are there, and that what it printed has arrived.
//
//     int main() {
//         provide_standard_streams();
//         print_output("12 tracks\n");
//         return end_output(terminal) ? 0 : 1;
//     }
//
// provide_standard_streams before anything else; end_output when no other thread prints any more;
// print_output on any thread.
#pragma once

#include "vantaro/terminal/terminal.h"

#include <string_view>

namespace vantaro::core {

/// Puts the null device in the place of each of the three streams that is closed, since the next file to be
/// opened would take it. What is printed on a closed one still counts as not written.
void provide_standard_streams();

/// Prints on standard output, as it is.
void print_output(std::string_view text);
/// The same, and at once where it would wait for more.
void print_output_at_once(std::string_view text);

/// Prints what waits. Returns whether everything has been written; what could not is said on `terminal`. A
/// reader that has closed its end, such as "head", wants no more: nothing is wrong then.
bool end_output(Terminal& terminal);

} // namespace vantaro::core
