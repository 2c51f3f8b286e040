#include "vantaro/locations/location_text.h"

#include "host/api/exceptions.h"
#include "host/api/guid.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace vantaro::core {

namespace {

constexpr std::string_view scheme_end = "://";

constexpr char to_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string percent_decoded(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%' && text.size() - at > 2) {
            const int high = detail::hex_digit(text[at + 1]);
            const int low = detail::hex_digit(text[at + 2]);
            if (high >= 0 && low >= 0) {
                result += static_cast<char>(high * 16 + low);
                at += 2;
                continue;
            }
        }
        result += text[at];
    }
    return result;
}

} // namespace

bool starts_with_ignoring_case(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size()
           && std::ranges::equal(text.substr(0, prefix.size()), prefix, {}, to_lower);
}

bool is_url(std::string_view location) {
    const std::size_t end = location.find(scheme_end);
    if (end == 0 || end == std::string_view::npos)
        return false;
    const auto is_letter = [](char c) { return to_lower(c) >= 'a' && to_lower(c) <= 'z'; };
    const auto belongs = [&](char c) {
        return is_letter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    };
    return is_letter(location.front()) && std::ranges::all_of(location.substr(0, end), belongs);
}

std::string path_of_url(std::string_view url) {
    for (const std::string_view prefix : {"file:///", "file://localhost/"})
        if (starts_with_ignoring_case(url, prefix)) {
            std::string path = percent_decoded(url.substr(prefix.size() - 1));
            if (path.find('\0') == std::string::npos)
                return path;
        }
    throw vantaro_io::exception_io_no_handler_for_path();
}

std::string full_path(std::string_view path, std::string_view folder) {
    const std::filesystem::path joined = std::filesystem::path(folder) / path;
    // Behind a link, taking ".." out of the text would lead elsewhere than the system goes.
    if (std::ranges::find(joined, "..") != joined.end()) {
        std::error_code error;
        const std::filesystem::path real = std::filesystem::weakly_canonical(joined, error);
        if (!error)
            return real.lexically_normal().string();
    }
    return joined.lexically_normal().string();
}

std::string shown(std::string_view path) {
    constexpr std::size_t longest = 500;
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::size_t end = std::min(path.size(), longest);
    // Not within a character.
    while (end < path.size() && end > 0 && (static_cast<unsigned char>(path[end]) & 0xC0) == 0x80)
        --end;
    std::string result;
    for (const char c : path.substr(0, end)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F)
            result += c;
        else
            result.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
    }
    if (end < path.size())
        result += "...";
    return result;
}

} // namespace vantaro::core
