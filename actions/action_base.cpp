#include "actions/action_base.h"

#include <algorithm>

namespace quorvex {

std::array<std::string_view, 2> split_two_lines(std::string_view text) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos || text.find('\n', end + 1) != std::string_view::npos)
        throw vantaro_io::exception_io_data();
    return {text.substr(0, end), text.substr(end + 1)};
}

std::string join_two_lines(std::string& first, std::string& second) {
    std::ranges::replace(first, '\n', '|');
    std::ranges::replace(second, '\n', '|');
    return first + '\n' + second;
}

} // namespace quorvex
