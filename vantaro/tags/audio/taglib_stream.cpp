#include "vantaro/tags/audio/taglib_stream.h"

#include "host/api/exceptions.h"

#include <tfile.h>

#include <algorithm>
#include <utility>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t block_size = 8192;
constexpr std::size_t largest_search = std::size_t{16} << 20;
constexpr std::size_t largest_backwards = std::size_t{64} << 20;
constexpr std::size_t largest_piece = std::size_t{0x0FFFFFFF} + 20; // an ID3v2 tag with header and footer
constexpr std::size_t most_ignored_ends = 1000;

/// How many bytes TagLib reads at a time when it looks for something.
class SearchUnit : public TagLib::File {
public:
    static std::size_t size() { return bufferSize(); }
};

} // namespace

void TagLibStream::check() const {
    if (failure_)
        std::rethrow_exception(failure_);
}

TagLib::ByteVector TagLibStream::feigned_end() {
    if (++ignored_ends_ > most_ignored_ends) {
        check();
        throw vantaro_io::exception_io_data("The audio is not found where the file says");
    }
    return {};
}

bool TagLibStream::may_search() {
    const std::size_t most =
        std::exchange(search_place_, position_) > position_ ? largest_backwards : largest_search;
    searched_ += SearchUnit::size();
    return searched_ <= most;
}

std::size_t TagLibStream::read(std::size_t offset, char* buffer, std::size_t size) {
    if (file_.is_in_memory(start_ + offset, size))
        return file_.some(start_ + offset, size).copy(buffer, size);
    if (size >= block_size)
        return file_.copy(start_ + offset, buffer, size);
    std::size_t done = 0;
    while (done < size) {
        const std::size_t place = start_ + offset + done;
        if (place < block_start_ || place - block_start_ >= block_.size()) {
            block_start_ = place / block_size * block_size;
            block_.resize(block_size);
            block_.resize(file_.copy(block_start_, block_.data(), block_size));
            if (place - block_start_ >= block_.size())
                break;
        }
        done += block_.copy(buffer + done, size - done, place - block_start_);
    }
    return done;
}

TagLib::ByteVector TagLibStream::readBlock(unsigned long length) {
    // Searches are told from the rest by what they read at a time.
    const bool is_search = length == SearchUnit::size();
    if (failure_ || length > largest_piece || (is_search && !may_search()))
        return feigned_end();
    if (length == 0 || position_ >= size_)
        return {};
    const auto size = std::min<std::size_t>(length, static_cast<std::size_t>(size_ - position_));
    TagLib::ByteVector data(static_cast<unsigned>(size));
    try {
        file_.check_abort();
        data.resize(static_cast<unsigned>(read(static_cast<std::size_t>(position_), data.data(), size)));
    } catch (...) {
        failure_ = std::current_exception();
        return {};
    }
    position_ += static_cast<long>(data.size());
    return data;
}

void TagLibStream::seek(long offset, Position position) {
    const long base = position == Current ? position_ : position == End ? size_ : 0;
    position_ = std::max(0L, base + offset);
}

} // namespace vantaro::core::tags
