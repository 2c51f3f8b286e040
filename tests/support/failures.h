// Operations that a test lets run, aborts, or wants to see fail.
//
//     EXPECT_EQ(failure_of([&] { read_configuration(reader, abort_now); }), "User abort");
#pragma once

#include "host/api/abort_flag.h"

#include <string>

namespace vantaro::test {

class FixedFlag final : public AbortFlag {
public:
    explicit FixedFlag(bool is_set) : is_set_(is_set) {}
    bool is_aborting() const noexcept override { return is_set_; }
    int wait_handle() const noexcept override { return -1; }

private:
    bool is_set_;
};

inline FixedFlag run_on(false);
inline FixedFlag abort_now(true);

/// The text of the exception that `run` ends with; "" when it ends without one.
template <class Run>
std::string failure_of(Run&& run) {
    try {
        run();
        return "";
    } catch (const std::exception& error) {
        return error.what();
    }
}

} // namespace vantaro::test
