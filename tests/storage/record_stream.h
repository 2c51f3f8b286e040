// Streams of records in short: "a1 bxyz" are two, of the variables a and b, with the values "1" and "xyz".
#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>

namespace vantaro::test {

inline std::string record(std::string_view variable, std::string_view value) {
    std::string bytes(variable);
    bytes.resize(16, '\x7E');
    for (std::size_t n = 0; n < 4; ++n)
        bytes += static_cast<char>(value.size() >> (8 * n) & 0xFF);
    return bytes.append(value);
}

inline std::string stream(const std::string& text) {
    std::string bytes;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        bytes += record(word.substr(0, 1), word.substr(1));
    return bytes;
}

} // namespace vantaro::test
