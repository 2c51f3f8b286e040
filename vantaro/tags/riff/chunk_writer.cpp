#include "vantaro/tags/riff/chunk_writer.h"

#include "host/api/exceptions.h"

#include <algorithm>
#include <utility>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t name_size = 4;

} // namespace

std::size_t chunk_total(const ChunkForm& form, std::size_t size) {
    return size == 0 ? 0 : form.chunk_header_size() + size + (form.pads ? size % 2 : 0);
}

std::string ChunkWriter::with_header(std::string_view name, const Chunk* old, std::string body) {
    const ChunkForm& form = chunks_.form();
    std::uint64_t size = body.size();
    if (old != nullptr && old->size64_entry)
        sizes64_->table[*old->size64_entry].size = std::exchange(size, no_size32);
    if (form.pads)
        body.append(body.size() % 2, '\0');
    return std::string(name) + form.number_bytes(size) + body;
}

void ChunkWriter::put(const Chunk* old, std::string_view name, std::string body) {
    if (old == nullptr) {
        if (!body.empty())
            added_ += with_header(name, nullptr, std::move(body));
        return;
    }
    if (body.empty() && old->size64_entry)
        sizes64_->table[*old->size64_entry].name.clear();
    if (!body.empty())
        body = with_header(name, old, std::move(body));
    changes_.push_back({old->start, old->total(), std::move(body)});
}

void ChunkWriter::add_behind(const Chunk& chunk, std::string_view name, std::string body) {
    changes_.push_back({chunk.end(), 0, with_header(name, nullptr, std::move(body))});
}

// Audio of an open size would take what is put behind it for more of it.
void ChunkWriter::close_last() {
    const Chunk& last = chunks_.chunks().back();
    const ChunkForm& form = chunks_.form();
    if (!last.is_open)
        return;
    std::uint64_t size = last.size;
    if (sizes64_ && (last.has_size64 || size >= no_size32))
        sizes64_->audio = std::exchange(size, no_size32);
    changes_.push_back({last.start + name_size, form.size_width, form.number_bytes(size)});
}

void ChunkWriter::add_new() {
    if (added_.empty())
        return;
    std::size_t place = chunks_.end();
    if (!chunks_.chunks().empty()) {
        const Chunk& last = chunks_.chunks().back();
        const bool stays = std::ranges::find(changes_, last.start, &Change::start) == changes_.end();
        if (last.is_open && chunks_.form().open_audio_stays) {
            place = last.start;
        } else {
            if (stays && chunks_.form().pads && (last.size + last.padding) % 2 != 0)
                added_.insert(0, 1, '\0');
            close_last();
        }
    }
    changes_.push_back({place, 0, std::move(added_)});
}

std::int64_t ChunkWriter::growth() const {
    std::int64_t result = 0;
    for (const Change& change : changes_)
        result += static_cast<std::int64_t>(change.bytes.size()) - static_cast<std::int64_t>(change.size);
    return result;
}

void ChunkWriter::set_outer_size() {
    const ChunkForm& form = chunks_.form();
    if (!form.has_outer_size)
        return;
    const std::size_t place = chunks_.start() + name_size;
    std::uint64_t size = chunks_.outer_end() + static_cast<std::uint64_t>(growth()) - place - form.size_width;
    if (sizes64_) {
        sizes64_->form = size;
        if (size > no_size32 || form.number(chunks_.file().bytes(place, form.size_width)) == form.open_size())
            size = no_size32;
    }
    changes_.push_back({place, form.size_width, form.number_bytes(size)});
}

void ChunkWriter::write(Rewriting& rewriting) {
    add_new();
    set_outer_size();
    if (sizes64_) {
        const Chunk& chunk = chunks_.chunks().front();
        changes_.push_back({chunk.body, chunk.size, sizes64_->render(chunks_.bytes(chunk))});
    }
    // Neighbours become one: when one takes room from the other, nothing behind them moves.
    std::ranges::stable_sort(changes_, {}, &Change::start);
    for (std::size_t i = 0; i < changes_.size();) {
        Change change = std::move(changes_[i]);
        for (++i; i < changes_.size() && changes_[i].start == change.start + change.size; ++i) {
            change.size += changes_[i].size;
            change.bytes += changes_[i].bytes;
        }
        rewriting.replace(change.start, change.size, std::move(change.bytes));
    }
}

} // namespace vantaro::core::tags
