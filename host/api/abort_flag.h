// AbortFlag: how a long operation learns that it is no longer wanted.
//
//     for (const Track& track : tracks) {
//         abort.check();          // throws vantaro_io::exception_aborted, "User abort"
//         ...
//     }
//
// It may be set on one thread and asked on any other; once set it stays set.
#pragma once

#include "host/api/exceptions.h"

namespace vantaro {

class AbortFlag {
public:
    virtual bool is_aborting() const noexcept = 0;
    /// A file descriptor that becomes readable when the flag is set, for waiting beside other things. It
    /// belongs to the flag.
    virtual int wait_handle() const noexcept = 0;

    /// Throws: vantaro_io::exception_aborted when the flag is set.
    void check() const {
        if (is_aborting())
            throw vantaro_io::exception_aborted();
    }

protected:
    ~AbortFlag() = default;
};

} // namespace vantaro
