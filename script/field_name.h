// The names that a tag field may have.
#pragma once

#include <algorithm>
#include <string_view>

namespace quorvex {

/// Not empty, and every byte in 0x20 to 0x7E but none of "=", "%", "<", ">".
constexpr bool is_valid_field_name(std::string_view name) {
    return !name.empty() && std::ranges::all_of(name, [](char c) {
        return c >= 0x20 && c <= 0x7E && c != '=' && c != '%' && c != '<' && c != '>';
    });
}

} // namespace quorvex
