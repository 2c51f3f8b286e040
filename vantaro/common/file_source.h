// A file that is open for reading.
//
//     const FileSource file = FileSource::open(path);
//     file.read(0, buffer, 10);
//
// Never waits for the other end of a pipe. Any thread.
#pragma once

#include "vantaro/common/byte_source.h"

namespace vantaro::core {

class FileSource final : public ByteSource {
public:
    /// Throws exception_io_not_found, exception_io_denied, exception_io (with the system's text), and
    /// exception_io_data when it is no regular file.
    static FileSource open(const std::string& path);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    const std::string& path() const override { return path_; }
    /// When it was opened.
    std::uint64_t size() const override { return size_; }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const override;

private:
    FileSource(std::string path, int descriptor, std::uint64_t size)
        : path_(std::move(path)), descriptor_(descriptor), size_(size) {}

    const std::string path_;
    const int descriptor_;
    const std::uint64_t size_;
};

} // namespace vantaro::core
