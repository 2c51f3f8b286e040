#include "vantaro/tags/file_bytes.h"

#include "host/api/exceptions.h"

#include <algorithm>
#include <utility>

namespace vantaro::core::tags {

namespace {

/// Tags with a usual picture are in the first look. The system reads ahead about as much at once.
constexpr std::size_t head_size = 72 << 10;
/// ID3v1 and APE tags, the last page of an Ogg file, an MP4 file's index behind its audio.
constexpr std::size_t tail_size = 4 << 10;
/// What is asked for elsewhere is read with what stands behind it.
constexpr std::size_t least_look = 4 << 10;
constexpr std::size_t spare_size = head_size + 6 * least_look;
constexpr std::size_t largest_piece = std::size_t{0x0FFFFFFF} + 20; // an ID3v2 tag with header and footer
/// What is looked at beyond this is audio that a format has its tags in the midst of.
constexpr std::uint64_t most_looked_at = 16 << 20;

thread_local std::vector<char> spare_of_thread;

/// The file once more, from memory as far as it is there.
class KnownBytes final : public ByteSource {
public:
    explicit KnownBytes(FileBytes& file) : file_(file) {}

    const std::string& path() const override { return file_.path(); }
    std::uint64_t size() const override { return file_.size(); }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const override {
        return file_.is_in_memory(offset, size) ? file_.some(offset, size).copy(buffer, size)
                                                : file_.copy(offset, buffer, size);
    }

private:
    FileBytes& file_;
};

} // namespace

FileBytes::FileBytes(const ByteSource& source, const AbortFlag* abort)
    : source_(source), abort_(abort), size_(source.size()), spare_(std::exchange(spare_of_thread, {})) {
    if (spare_.empty())
        spare_.resize(spare_size);
}

FileBytes::~FileBytes() {
    spare_of_thread = std::move(spare_);
}

void FileBytes::check_abort() const {
    if (abort_ != nullptr && abort_->is_aborting())
        throw vantaro_io::exception_aborted();
}

char* FileBytes::take_room(std::size_t size) {
    if (size <= spare_.size() - spare_used_)
        return spare_.data() + std::exchange(spare_used_, spare_used_ + size);
    // Not initialised: it may be large.
    return further_.emplace_back(new char[size]).get(); // NOLINT(modernize-make-unique)
}

const FileBytes::Chunk* FileBytes::find_chunk(std::size_t start, std::size_t size) const {
    for (const Chunk& chunk : chunks_)
        if (start >= chunk.start && start + size <= chunk.start + chunk.bytes.size())
            return &chunk;
    return nullptr;
}

bool FileBytes::is_in_memory(std::size_t start, std::size_t size) const {
    return find_chunk(start, size) != nullptr;
}

std::string_view FileBytes::load(std::size_t start, std::size_t size) {
    if (const Chunk* chunk = find_chunk(start, size))
        return chunk->bytes.substr(start - chunk->start, size);
    std::size_t from = start;
    std::size_t end = start + std::max(size, least_look);
    if (chunks_.empty() && start + size <= head_size) {
        from = 0;
        end = head_size;
    } else if (const std::size_t tail = size_ - std::min(size_, tail_size); start >= tail) {
        from = tail;
    }
    end = std::min(end, size_);
    char* const room = take_room(end - from);
    if (copy(from, room, end - from) != end - from)
        throw vantaro_io::exception_io("The file has become shorter while it was being read");
    const Chunk& chunk = chunks_.emplace_back(Chunk{from, {room, end - from}});
    return chunk.bytes.substr(start - from, size);
}

std::string_view FileBytes::some(std::size_t start, std::size_t size) {
    if (start >= size_)
        return {};
    size = std::min(size, size_ - start);
    if (size > largest_piece)
        throw vantaro_io::exception_io_data("A tag is larger than any can be");
    if (size == 0)
        return {};
    const std::string_view result = load(start, size);
    if (!looked_at_.empty() && looked_at_.back().end() >= start && looked_at_.back().offset <= start)
        looked_at_.back().size = std::max(looked_at_.back().end(), start + size) - looked_at_.back().offset;
    else
        looked_at_.push_back({start, size});
    return result;
}

std::string_view FileBytes::bytes(std::size_t start, std::size_t size) {
    const std::string_view result = some(start, size);
    if (result.size() != size)
        throw vantaro_io::exception_io_data("The file ends in the middle of a tag or of a header");
    return result;
}

std::size_t FileBytes::copy(std::size_t start, char* buffer, std::size_t size) {
    check_abort();
    return source_.read(start, buffer, size);
}

std::vector<Extent> FileBytes::looked_at() const {
    std::vector<Extent> sorted = looked_at_;
    std::ranges::sort(sorted, {}, &Extent::offset);
    std::vector<Extent> result;
    for (const Extent& extent : sorted)
        if (!result.empty() && extent.offset <= result.back().end())
            result.back().size = std::max(result.back().end(), extent.end()) - result.back().offset;
        else if (extent.size > 0)
            result.push_back(extent);
    std::uint64_t left = most_looked_at;
    for (Extent& extent : result) {
        extent.size = std::min(extent.size, left);
        left -= extent.size;
    }
    std::erase_if(result, [](const Extent& extent) { return extent.size == 0; });
    return result;
}

void Rewriting::replace(std::size_t start, std::size_t size, const std::vector<Part>& parts) {
    Splice current{start, 0, {}};
    std::size_t place = start;
    for (const Part& part : parts) {
        if (part.size() > 0 && part.stands_at(place) && place + part.size() <= start + size) {
            current.size = place - current.offset;
            splices_.push_back(std::exchange(current, {place + part.size(), 0, {}}));
        } else {
            current.bytes += part.bytes();
        }
        place += part.size();
    }
    current.size = start + size - current.offset;
    splices_.push_back(std::move(current));
}

void Rewriting::replace(std::size_t start, std::size_t size, std::string bytes) {
    splices_.push_back({start, size, std::move(bytes)});
}

FileEdit Rewriting::finish() {
    FileEdit edit{file_.size(), std::move(splices_)};
    std::erase_if(edit.splices,
                  [](const Splice& splice) { return splice.size == 0 && splice.bytes.empty(); });
    std::ranges::stable_sort(edit.splices, {}, &Splice::offset);
    FileEdit result = without_repetitions(KnownBytes(file_), edit);
    result.looked_at = file_.looked_at();
    return result;
}

} // namespace vantaro::core::tags
