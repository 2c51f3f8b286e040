#include "host/exception_filter.h"

#include "host/access.h"

#include <string>

namespace quorvex {

bool uExceptFilterProc(const std::exception& failure) {
    print_to_console(std::string("Quorvex: ") + failure.what());
    return true;
}

} // namespace quorvex
