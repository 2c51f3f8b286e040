#include "vantaro/common/system_error.h"

#include <cerrno>
#include <system_error>

namespace vantaro::core {

namespace {

[[noreturn]] void throw_fitting(int code, const std::string& start) {
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        throw vantaro_io::exception_io_not_found(start + vantaro_io::exception_io_not_found::default_text);
    case EACCES:
    case EPERM:
    case EROFS:
        throw vantaro_io::exception_io_denied(start + vantaro_io::exception_io_denied::default_text);
    case ENOSPC:
    case EDQUOT:
        throw NoSpaceLeft(start + std::generic_category().message(code));
    default:
        throw vantaro_io::exception_io(start + std::generic_category().message(code));
    }
}

} // namespace

void throw_system_error(int code) {
    throw_fitting(code, {});
}

void throw_system_error(int code, const std::string& path) {
    throw_fitting(code, path + ": ");
}

} // namespace vantaro::core
