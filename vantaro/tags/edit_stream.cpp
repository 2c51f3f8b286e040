#include "vantaro/tags/edit_stream.h"

#include "host/api/exceptions.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

namespace vantaro::core::tags {

namespace {

std::string_view view(const TagLib::ByteVector& data) {
    return {data.data(), data.size()};
}

} // namespace

EditStream::EditStream(FileBytes& file) : file_(file), old_size_(file.size()), size_(old_size_) {
    if (old_size_ > 0)
        pieces_.push_back({0, old_size_, 0, false});
}

FileEdit EditStream::edit() const {
    if (failure_)
        std::rethrow_exception(failure_);
    Rewriting result(file_);
    Splice current;
    const auto close_at = [&](std::uint64_t old_place) {
        current.size = old_place - current.offset;
        if (current.size > 0 || !current.bytes.empty())
            result.replace(current.offset, current.size, std::move(current.bytes));
        current = {};
    };
    for (const Piece& piece : pieces_) {
        if (piece.is_added) {
            current.bytes.append(added_, piece.source, piece.size);
            continue;
        }
        close_at(piece.source);
        current.offset = piece.source + piece.size;
    }
    close_at(old_size_);
    return result.finish();
}

std::size_t EditStream::piece_at(std::uint64_t position) const {
    const auto behind = std::ranges::upper_bound(pieces_, position, {}, &Piece::start);
    return static_cast<std::size_t>(behind - pieces_.begin()) - 1;
}

/// Makes a piece start at `position` and returns its index, or the number of pieces for the end.
std::size_t EditStream::split(std::uint64_t position) {
    if (position == size_)
        return pieces_.size();
    const std::size_t index = piece_at(position);
    const std::uint64_t head = position - pieces_[index].start;
    if (head == 0)
        return index;
    Piece tail = pieces_[index];
    tail.start += head;
    tail.source += head;
    tail.size -= head;
    pieces_[index].size = head;
    pieces_.insert(pieces_.begin() + static_cast<std::ptrdiff_t>(index) + 1, tail);
    return index + 1;
}

void EditStream::replace(std::uint64_t start, std::uint64_t size, std::string_view bytes) {
    const std::size_t first = split(start);
    const std::size_t behind = split(start + size);
    auto place = pieces_.erase(pieces_.begin() + static_cast<std::ptrdiff_t>(first),
                               pieces_.begin() + static_cast<std::ptrdiff_t>(behind));
    if (!bytes.empty()) {
        place = pieces_.insert(place, {start, bytes.size(), added_.size(), true}) + 1;
        added_ += bytes;
    }
    if (bytes.size() == size)
        return;
    for (; place != pieces_.end(); ++place)
        place->start = place->start - size + bytes.size();
    size_ = size_ - size + bytes.size();
}

/// Only what differs is taken over: TagLib writes whole pages and chunks of which a few bytes are new.
void EditStream::overwrite(std::uint64_t start, std::string_view bytes) {
    std::string present(bytes.size(), '\0');
    if (read(start, present.data(), present.size()) == bytes.size()) {
        const auto [old_byte, new_byte] = std::ranges::mismatch(present, bytes);
        const auto head = static_cast<std::size_t>(new_byte - bytes.begin());
        if (head == bytes.size())
            return;
        std::size_t size = bytes.size();
        while (present[size - 1] == bytes[size - 1])
            --size;
        bytes = bytes.substr(head, size - head);
        start += head;
    }
    replace(start, bytes.size(), bytes);
}

/// Returns how much there was. A failure counts as the end of the file and comes out of edit().
std::size_t EditStream::read(std::uint64_t start, char* buffer, std::size_t size) {
    if (start >= size_)
        return 0;
    size = std::min<std::uint64_t>(size, size_ - start);
    std::size_t done = 0;
    for (std::size_t i = piece_at(start); done < size; ++i) {
        const Piece& piece = pieces_[i];
        const std::uint64_t skipped = start + done - piece.start;
        const std::size_t count = std::min<std::uint64_t>(size - done, piece.size - skipped);
        if (piece.is_added) {
            added_.copy(buffer + done, count, piece.source + skipped);
        } else {
            try {
                if (count > (1 << 20))
                    file_.copy(piece.source + skipped, buffer + done, count);
                else
                    file_.bytes(piece.source + skipped, count).copy(buffer + done, count);
            } catch (...) {
                failure_ = std::current_exception();
                return done;
            }
        }
        done += count;
    }
    return done;
}

TagLib::ByteVector EditStream::readBlock(unsigned long length) {
    if (length == 0 || position_ >= size_)
        return {};
    const std::uint64_t size = std::min<std::uint64_t>(length, size_ - position_);
    TagLib::ByteVector data(
        static_cast<unsigned>(std::min<std::uint64_t>(size, std::numeric_limits<int>::max())));
    data.resize(static_cast<unsigned>(read(position_, data.data(), data.size())));
    position_ += data.size();
    return data;
}

void EditStream::writeBlock(const TagLib::ByteVector& data) {
    if (data.isEmpty())
        return;
    if (position_ > size_)
        replace(size_, 0, std::string(position_ - size_, '\0'));
    const std::size_t within = std::min<std::uint64_t>(data.size(), size_ - position_);
    if (within > 0)
        overwrite(position_, view(data).substr(0, within));
    if (within < data.size())
        replace(size_, 0, view(data).substr(within));
    position_ += data.size();
}

void EditStream::insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replaced) {
    const std::uint64_t place = std::min<std::uint64_t>(start, size_);
    const std::uint64_t size = std::min<std::uint64_t>(replaced, size_ - place);
    if (size == data.size() && size > 0)
        overwrite(place, view(data));
    else
        replace(place, size, view(data));
    position_ = place + data.size();
}

void EditStream::removeBlock(unsigned long start, unsigned long length) {
    const std::uint64_t place = std::min<std::uint64_t>(start, size_);
    replace(place, std::min<std::uint64_t>(length, size_ - place), {});
}

void EditStream::seek(long offset, Position position) {
    const long base = position == Current ? tell() : position == End ? length() : 0;
    position_ = static_cast<std::uint64_t>(std::max(0L, base + offset));
}

void EditStream::truncate(long length) {
    const auto size = static_cast<std::uint64_t>(std::max(0L, length));
    if (size < size_)
        replace(size, size_ - size, {});
    else if (size > size_)
        replace(size_, 0, std::string(size - size_, '\0'));
}

} // namespace vantaro::core::tags
