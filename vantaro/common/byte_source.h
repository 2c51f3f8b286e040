// Bytes that can be read at any place: a file that is open, or what a test has made.
//
//     const MemorySource source("x.flac", bytes);
//     FileBytes file(source);
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

namespace vantaro::core {

class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// The file's path: its extension tells the format where the content does not.
    virtual const std::string& path() const = 0;
    /// In bytes. Throws exception_io.
    virtual std::uint64_t size() const = 0;
    /// Up to `size` bytes into `buffer`; returns how many, fewer only at the end. Throws exception_io.
    virtual std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const = 0;

protected:
    ByteSource() = default;
    ByteSource(const ByteSource&) = default;
    ByteSource& operator=(const ByteSource&) = default;
    ByteSource(ByteSource&&) = default;
    ByteSource& operator=(ByteSource&&) = default;
};

class MemorySource final : public ByteSource {
public:
    MemorySource(std::string path, std::string bytes) : path_(std::move(path)), bytes_(std::move(bytes)) {}

    const std::string& path() const override { return path_; }
    const std::string& bytes() const { return bytes_; }
    std::uint64_t size() const override { return bytes_.size(); }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const override {
        return offset < bytes_.size() ? bytes_.copy(buffer, size, offset) : 0;
    }

private:
    std::string path_;
    std::string bytes_;
};

} // namespace vantaro::core
