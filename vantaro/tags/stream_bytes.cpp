#include "vantaro/tags/stream_bytes.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/text.h"

#include <tbytevector.h>

#include <algorithm>

namespace vantaro::core::tags {

std::size_t stream_size(TagLib::IOStream& stream) {
    return static_cast<std::size_t>(std::max(stream.length(), 0L));
}

std::string read_some(TagLib::IOStream& stream, std::size_t start, std::size_t size) {
    const std::size_t end = stream_size(stream);
    if (start >= end)
        return {};
    stream.seek(static_cast<long>(start));
    return to_bytes(stream.readBlock(std::min(size, end - start)));
}

std::string read_bytes(TagLib::IOStream& stream, std::size_t start, std::size_t size) {
    std::string bytes = read_some(stream, start, size);
    if (bytes.size() != size)
        throw vantaro_io::exception_io_data();
    return bytes;
}

void replace_bytes(TagLib::IOStream& stream, std::size_t start, std::size_t size, std::string_view bytes) {
    if (bytes.size() == size) {
        stream.seek(static_cast<long>(start));
        stream.writeBlock(to_byte_vector(bytes));
    } else if (bytes.empty()) {
        stream.removeBlock(start, size);
    } else {
        stream.insert(to_byte_vector(bytes), start, size);
    }
}

TagLib::ByteVector WindowStream::readBlock(unsigned long length) {
    const long left = std::max(size_ - position_, 0L);
    length = std::min(length, static_cast<unsigned long>(left));
    if (length == 0)
        return {};
    stream_.seek(start_ + position_);
    TagLib::ByteVector bytes = stream_.readBlock(length);
    position_ += static_cast<long>(bytes.size());
    return bytes;
}

void WindowStream::seek(long offset, Position position) {
    const long base = position == Beginning ? 0 : position == Current ? position_ : size_;
    position_ = std::max(base + offset, 0L);
}

} // namespace vantaro::core::tags
