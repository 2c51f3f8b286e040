#include "vantaro/tags/outer_tags.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/tag_kinds.h"

namespace vantaro::core::tags {

namespace {

constexpr std::string_view ape_mark = "APETAGEX";
constexpr std::string_view lyrics3_mark = "LYRICS200";
constexpr std::size_t lyrics3_size_digits = 6;

} // namespace

OuterTags::OuterTags(FileBytes& file, std::size_t start) : file_(file), start_(start), end_(file.size()) {
    if (start > 0) {
        id3v2_room_ = id3v2_size(file.bytes(0, id3v2_header_size));
        id3v2_.emplace(file, 0, id3v2_room_);
    }
    find_id3v1();
    skip_lyrics3();
    find_ape();
}

std::vector<TagStore*> OuterTags::tags(std::string_view customary) {
    const bool ape_first = customary == ape_tag;
    std::vector<TagStore*> result;
    if (ape_ && ape_first)
        result.push_back(&*ape_);
    if (id3v2_)
        result.push_back(&*id3v2_);
    if (ape_ && !ape_first)
        result.push_back(&*ape_);
    if (id3v1_)
        result.push_back(&*id3v1_);
    return result;
}

TagStore* OuterTags::add(std::string_view customary) {
    if (customary == ape_tag)
        return ape_ ? nullptr : &ape_.emplace();
    return id3v2_ ? nullptr : &id3v2_.emplace();
}

void OuterTags::write(Rewriting& rewriting) const {
    if (id3v2_)
        // What is nothing but tags keeps an empty one: it would be no file of its format any more.
        rewriting.replace(0, id3v2_room_,
                          id3v2_->empty() && audio().size() > 0 ? std::vector<Part>()
                                                                : id3v2_->render(id3v2_room_));
    if (ape_)
        rewriting.replace(ape_start_, ape_size_, ape_->empty() ? "" : ape_->render());
    if (id3v1_)
        rewriting.replace(id3v1_start_, id3v1_size, id3v1_->render());
}

void OuterTags::find_id3v1() {
    if (end_ - start_ < id3v1_size)
        return;
    const std::string_view bytes = file_.bytes(end_ - id3v1_size, id3v1_size);
    // "TAG" stands within "APETAGEX" too.
    if (!bytes.starts_with("TAG") || bytes.starts_with("TAGEX"))
        return;
    id3v1_.emplace(bytes);
    end_ -= id3v1_size;
    id3v1_start_ = end_;
}

// Lyrics3 is not edited; it only stands between the others.
void OuterTags::skip_lyrics3() {
    const std::size_t tail = lyrics3_mark.size() + lyrics3_size_digits;
    if (!id3v1_ || end_ - start_ < tail)
        return;
    const std::string_view bytes = file_.bytes(end_ - tail, tail);
    if (!bytes.ends_with(lyrics3_mark))
        return;
    std::size_t size = 0;
    for (const char c : bytes.substr(0, lyrics3_size_digits)) {
        if (c < '0' || c > '9')
            return;
        size = size * 10 + static_cast<std::size_t>(c - '0');
    }
    size += tail;
    if (size <= end_ - start_)
        end_ -= size;
}

void OuterTags::find_ape() {
    ape_start_ = end_;
    if (end_ - start_ < ape_footer_size)
        return;
    const std::string_view footer = file_.bytes(end_ - ape_footer_size, ape_footer_size);
    if (!footer.starts_with(ape_mark))
        return;
    std::size_t size = little_endian(footer.substr(12, 4));
    if (size < ape_footer_size || size > end_ - start_)
        throw vantaro_io::exception_io_data("The APE tag is damaged");
    // Whatever its flag says, a header is only what looks like one.
    const std::size_t header = end_ - start_ - size < ape_footer_size ? end_ : end_ - size - ape_footer_size;
    if (header != end_ && file_.some(header, ape_mark.size()) == ape_mark)
        size += ape_footer_size;
    ape_start_ = end_ - size;
    ape_size_ = size;
    ape_.emplace(file_.bytes(ape_start_, ape_size_));
}

} // namespace vantaro::core::tags
