#include "vantaro/common/own_program.h"

#include "vantaro/common/system_error.h"

#include <sys/auxv.h>

#include <bit>
#include <filesystem>
#include <system_error>

namespace vantaro::core {

std::string own_program() {
    std::error_code error;
    const std::filesystem::path link = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error)
        return link.string();
    const auto* started_as = std::bit_cast<const char*>(::getauxval(AT_EXECFN));
    const std::filesystem::path program = std::filesystem::canonical(started_as ? started_as : "", error);
    if (error)
        throw_system_error(error.value(), "The program's own file");
    return program.string();
}

} // namespace vantaro::core
