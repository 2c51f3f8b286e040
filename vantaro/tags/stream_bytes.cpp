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

} // namespace vantaro::core::tags
