// Streams over memory, and a reader that ends early.
//
//     MemoryWriter buffer;
//     client->get_config(buffer, abort);
//     store(buffer.bytes());
//
// Header only: host and components carry their own copies.
#pragma once

#include "host/api/stream.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vantaro {

class MemoryWriter final : public StreamWriter {
public:
    void write(const void* data, std::size_t count, AbortFlag& abort) override {
        abort.check();
        bytes_.append(static_cast<const char*>(data), count);
    }
    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

/// Reads bytes that outlive it.
class MemoryReader final : public StreamReader {
public:
    explicit MemoryReader(std::string_view bytes) : rest_(bytes) {}

    std::size_t read(void* buffer, std::size_t count, AbortFlag& abort) override {
        abort.check();
        const std::size_t taken = std::min(count, rest_.size());
        if (taken != 0)
            std::memcpy(buffer, rest_.data(), taken);
        rest_.remove_prefix(taken);
        return taken;
    }

private:
    std::string_view rest_;
};

/// The next `size` bytes of another stream, which must have them.
class LimitedReader final : public StreamReader {
public:
    LimitedReader(StreamReader& stream, std::uint64_t size) : stream_(stream), left_(size) {}

    /// Throws: vantaro_io::exception_io_data_truncation when the other stream ends before the limit.
    std::size_t read(void* buffer, std::size_t count, AbortFlag& abort) override {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, left_));
        read_exact(stream_, buffer, wanted, abort);
        left_ -= wanted;
        return wanted;
    }
    std::uint64_t left() const { return left_; }

private:
    StreamReader& stream_;
    std::uint64_t left_;
};

} // namespace vantaro
