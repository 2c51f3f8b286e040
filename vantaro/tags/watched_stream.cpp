#include "vantaro/tags/watched_stream.h"

#include "vantaro/tags/raw_file.h"

#include <utility>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t largest_search = std::size_t{16} << 20;
constexpr std::size_t largest_backwards = std::size_t{64} << 20;
constexpr std::size_t largest_piece = std::size_t{0x0FFFFFFF} + 20; // an ID3v2 tag with header and footer
constexpr std::size_t most_ignored_ends = 1000;

} // namespace

TagLib::ByteVector WatchedStream::feigned_end() {
    if (++ignored_ends_ > most_ignored_ends) {
        check_abort();
        throw vantaro_io::exception_io_data();
    }
    return {};
}

bool WatchedStream::may_search() {
    const long place = stream_.tell();
    const std::size_t most = std::exchange(search_place_, place) > place ? largest_backwards : largest_search;
    searched_ += RawFile::search_unit();
    return searched_ <= most;
}

TagLib::ByteVector WatchedStream::readBlock(unsigned long length) {
    aborted_ = aborted_ || (abort_ != nullptr && abort_->is_aborting());
    // Searches are told from the rest by what they read at a time.
    const bool is_search = length == RawFile::search_unit() && !searches_all_;
    if (aborted_ || length > largest_piece || (is_search && !may_search()))
        return feigned_end();
    return stream_.readBlock(length);
}

} // namespace vantaro::core::tags
