// Little-endian numbers in byte streams, whatever the machine's own order.
//
//     write_number<std::uint32_t>(writer, count, abort);
//     auto count = read_number<std::uint32_t>(reader, abort);
#pragma once

#include "host/api/stream.h"

#include <array>
#include <concepts>
#include <cstdint>
#include <type_traits>

namespace quorvex {

template <std::integral Number>
void write_number(vantaro::StreamWriter& writer, Number number, vantaro::AbortFlag& abort) {
    std::array<std::uint8_t, sizeof(Number)> bytes;
    auto rest = static_cast<std::make_unsigned_t<Number>>(number);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(rest & 0xFF);
        rest = static_cast<std::make_unsigned_t<Number>>(rest >> 8);
    }
    writer.write(bytes.data(), bytes.size(), abort);
}

/// Throws: vantaro_io::exception_io_data_truncation when the stream ends before.
template <std::integral Number>
Number read_number(vantaro::StreamReader& reader, vantaro::AbortFlag& abort) {
    std::array<std::uint8_t, sizeof(Number)> bytes;
    vantaro::read_exact(reader, bytes.data(), bytes.size(), abort);
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8 | bytes[i];
    return static_cast<Number>(static_cast<std::make_unsigned_t<Number>>(number));
}

} // namespace quorvex
