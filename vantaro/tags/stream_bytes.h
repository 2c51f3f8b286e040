// Reading and replacing parts of a stream.
#pragma once

#include <tiostream.h>

#include <string>
#include <string_view>

namespace vantaro::core::tags {

std::size_t stream_size(TagLib::IOStream& stream);
/// Up to `size` bytes: fewer at the end of the stream.
std::string read_some(TagLib::IOStream& stream, std::size_t start, std::size_t size);
/// Exactly `size` bytes. Throws exception_io_data when there are fewer.
std::string read_bytes(TagLib::IOStream& stream, std::size_t start, std::size_t size);
/// Puts `bytes` in the place of the `size` bytes at `start`.
void replace_bytes(TagLib::IOStream& stream, std::size_t start, std::size_t size, std::string_view bytes);

} // namespace vantaro::core::tags
