// Ctrl+C and its kin: the process is asked to end, and ends what it has begun first.
//
//     Interrupt interrupt;                    // SIGINT, SIGTERM and SIGHUP from now on
//     if (interrupt.flag().is_aborting()) return 130;
//
// One at a time in a process; made on the main thread before others run. A closed standard output, or a
// file that is to become larger than the user may make one, no longer kills the process either.
#pragma once

#include "vantaro/services/abort_signal.h"

namespace vantaro::core {

class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    const AbortSignal& flag() const { return flag_; }
    AbortSignal& flag() { return flag_; }

private:
    AbortSignal flag_;
};

} // namespace vantaro::core
