#include "actions/parameter_text.h"

#include "host/api/exceptions.h"

#include <algorithm>

namespace quorvex {

void reject_parameter_text() {
    throw vantaro_io::exception_io_data();
}

void replace_line_feeds(std::string& setting) {
    std::ranges::replace(setting, '\n', '|');
}

std::pair<std::string_view, std::string_view> split_first_line(std::string_view text) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos)
        reject_parameter_text();
    return {text.substr(0, end), text.substr(end + 1)};
}

bool read_case_flag(std::string_view text) {
    if (text != "c" && text != "n")
        reject_parameter_text();
    return text == "c";
}

std::string join_two_lines(std::string& first, std::string& second) {
    replace_line_feeds(first);
    replace_line_feeds(second);
    return first + '\n' + second;
}

} // namespace quorvex
