#include "vantaro/tags/riff/chunk_list.h"

#include "host/api/exceptions.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t name_size = 4;
/// No file has as many: a hole would have billions.
constexpr std::size_t most_chunks = 10'000;

bool is_name(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char c) { return c >= ' ' && c <= '~'; });
}

bool contains(const std::array<std::string_view, 2>& texts, std::string_view text) {
    return std::ranges::find(texts, text) != texts.end();
}

} // namespace

ChunkList::ChunkList(FileBytes& file, const ChunkForm& form, std::size_t start)
    : file_(file), form_(form), start_(start), end_(start + form.header_size) {
    check_beginning();
    while (std::optional<Chunk> chunk = chunk_at(end_)) {
        if (chunks_.size() == most_chunks)
            throw vantaro_io::exception_io_data("The file has more chunks than any audio file");
        if (form_.has_sizes64 && chunks_.empty()) {
            if (chunk->name != "ds64")
                throw vantaro_io::exception_io_data("The first chunk of the file is not \"ds64\"");
            sizes64_.emplace(bytes(*chunk));
            is_taken_.resize(sizes64_->table.size());
        }
        end_ = chunk->end();
        chunks_.push_back(std::move(*chunk));
    }
    if (form_.has_sizes64 && chunks_.empty())
        throw vantaro_io::exception_io_data("The first chunk of the file is not \"ds64\"");
}

void ChunkList::check_beginning() const {
    const std::string_view head = file_.some(start_, form_.header_size);
    if (!contains(form_.marks, head.substr(0, name_size)) || head.size() < form_.header_size)
        throw vantaro_io::exception_io_data("The file does not begin with \"" + std::string(form_.marks[0])
                                            + "\" and a size, as its kind does");
    if (!form_.types[0].empty() && !contains(form_.types, type()))
        throw vantaro_io::exception_io_data("The file is a list of chunks, but of none of the kinds known");
}

std::string_view ChunkList::type() const {
    return file_.bytes(start_ + form_.header_size - name_size, name_size);
}

const Chunk* ChunkList::find(std::string_view name) const {
    const auto found = std::ranges::find(chunks_, name, &Chunk::name);
    return found == chunks_.end() ? nullptr : &*found;
}

const Chunk* ChunkList::find_audio() const {
    const auto found =
        std::ranges::find_if(chunks_, [this](const Chunk& chunk) { return form_.is_audio(chunk.name); });
    return found == chunks_.end() ? nullptr : &*found;
}

std::string_view ChunkList::head(const Chunk& chunk, std::size_t count) const {
    return file_.bytes(chunk.body, std::min(chunk.size, count));
}

std::uint64_t ChunkList::said_end() const {
    constexpr std::uint64_t anywhere = ~std::uint64_t{0};
    if (!form_.has_outer_size)
        return anywhere;
    std::uint64_t size = form_.number(file_.bytes(start_ + name_size, form_.size_width));
    if (sizes64_ && size == no_size32)
        size = sizes64_->form;
    const std::size_t counted_from = start_ + form_.chunk_header_size();
    return size == form_.open_size() || size > anywhere - counted_from ? anywhere : counted_from + size;
}

std::size_t ChunkList::outer_end() const {
    return std::clamp<std::uint64_t>(said_end(), end_, file_.size());
}

std::optional<ChunkList::Header> ChunkList::header_at(std::size_t place) const {
    const std::size_t size = form_.chunk_header_size();
    if (place > file_.size() || file_.size() - place < size)
        return std::nullopt;
    const std::string_view header = file_.bytes(place, size);
    if (!is_name(header.substr(0, name_size)))
        return std::nullopt;
    std::uint64_t body_size = form_.number(header.substr(name_size));
    if (form_.size_counts_header) {
        if (body_size < size)
            return std::nullopt;
        body_size -= size;
    }
    return Header{std::string(header.substr(0, name_size)), body_size, place + size};
}

// A program that has been stopped leaves no size behind, and nothing but audio.
bool ChunkList::is_left_open(const Header& header) const {
    return header.size == form_.open_size() || (header.size == 0 && said_end() <= header.body);
}

void ChunkList::find_size64(Chunk& chunk, std::uint64_t& size) {
    if (form_.is_audio(chunk.name)) {
        chunk.has_size64 = true;
        size = sizes64_->audio;
        return;
    }
    for (std::size_t i = 0; i < sizes64_->table.size(); ++i)
        if (sizes64_->table[i].name == chunk.name && !is_taken_[i]) {
            is_taken_[i] = true; // the next chunk of the name has the next entry
            chunk.has_size64 = true;
            chunk.size64_entry = i;
            size = sizes64_->table[i].size;
            return;
        }
}

std::optional<Chunk> ChunkList::chunk_at(std::size_t place) {
    std::optional<Header> header = header_at(place);
    if (!header)
        return std::nullopt;
    Chunk chunk{.name = header->name, .start = place, .body = header->body};
    if (sizes64_ && header->size == no_size32)
        find_size64(chunk, header->size);
    const std::size_t left = file_.size() - chunk.body;
    if (form_.is_audio(chunk.name) && (header->size > left || is_left_open(*header))) {
        chunk.is_open = true;
        chunk.size = left;
    } else if (header->size > left) {
        cut_off_ = header->name;
        return std::nullopt;
    } else {
        chunk.size = header->size;
    }
    if (form_.pads && chunk.size % 2 != 0)
        chunk.padding = padding_behind(chunk.end());
    return chunk;
}

// Some programs leave out the byte that pads an odd chunk, others put there something else than zero.
std::size_t ChunkList::padding_behind(std::size_t place) const {
    const std::string_view byte = file_.some(place, 1);
    if (byte.empty())
        return 0;
    if (byte[0] == '\0' || is_plausible(place + 1))
        return 1;
    const std::optional<Header> next = is_plausible(place) ? std::nullopt : header_at(place + 1);
    return next && next->size <= file_.size() - next->body ? 1 : 0;
}

// Whether a chunk can begin here: the next one, or the end, is where it says.
bool ChunkList::is_plausible(std::size_t place) const {
    const std::optional<Header> header = header_at(place);
    if (!header)
        return false;
    if (header->size > file_.size() - header->body)
        return form_.is_audio(header->name);
    const std::size_t end = header->body + header->size;
    const auto is_end_or_chunk = [this](std::size_t next) {
        return next == file_.size() || header_at(next).has_value();
    };
    return is_end_or_chunk(end) || (header->size % 2 != 0 && is_end_or_chunk(end + 1));
}

} // namespace vantaro::core::tags
