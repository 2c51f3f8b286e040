// Bytes written down by what they have in common with others: the old and the new bytes of a tag are nearly
// the same, often with a large picture in both, at another place.
//
//     std::string packed = pack(new_bytes, old_bytes);
//     std::string again = unpack(packed, old_bytes, new_bytes.size());
//
// The form: a byte, then for 0 the bytes as they are, for 1 a Zstandard frame (RFC 8878) made with the
// reference as prefix. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vantaro::core {

std::string pack(std::string_view bytes, std::string_view reference);

/// `size` is that of the bytes. Throws vantaro_io::exception_io_data when `packed` was not made of `size`
/// bytes with this reference.
std::string unpack(std::string_view packed, std::string_view reference, std::size_t size);

} // namespace vantaro::core
