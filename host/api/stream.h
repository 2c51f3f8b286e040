// Streams of bytes, as configuration and files are read and written.
//
//     std::uint32_t count = 0;
//     read_exact(reader, &count, sizeof count, abort);    // or the exception of a short stream
//
// A stream is used by one thread at a time and belongs to who handed it out.
#pragma once

#include "host/api/abort_flag.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace vantaro {

class StreamReader {
public:
    /// Reads up to `count` bytes into `buffer`. Returns how many; fewer than `count` only at the end.
    /// Throws: vantaro_io::exception_io, vantaro_io::exception_aborted.
    virtual std::size_t read(void* buffer, std::size_t count, AbortFlag& abort) = 0;

protected:
    ~StreamReader() = default;
};

class StreamWriter {
public:
    /// Writes `count` bytes.
    /// Throws: vantaro_io::exception_io, vantaro_io::exception_aborted.
    virtual void write(const void* data, std::size_t count, AbortFlag& abort) = 0;

protected:
    ~StreamWriter() = default;
};

/// Reads exactly `count` bytes.
/// Throws: vantaro_io::exception_io_data_truncation when the stream ends before, and what `read` throws.
inline void read_exact(StreamReader& reader, void* buffer, std::size_t count, AbortFlag& abort) {
    if (count != 0 && reader.read(buffer, count, abort) != count)
        throw vantaro_io::exception_io_data_truncation();
}

/// Passes over exactly `count` bytes. Throws as read_exact does.
inline void skip_exact(StreamReader& reader, std::uint64_t count, AbortFlag& abort) {
    std::array<std::byte, 4096> scratch;
    while (count > 0) {
        const auto step = static_cast<std::size_t>(std::min<std::uint64_t>(count, scratch.size()));
        read_exact(reader, scratch.data(), step, abort);
        count -= step;
    }
}

} // namespace vantaro
