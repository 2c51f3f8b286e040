// Formats with tags around the audio: ID3v2 in front, APE and ID3v1 behind. FLAC has its own tag within.
#include "host/api/exceptions.h"
#include "vantaro/tags/ape_fields.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/flac_blocks.h"
#include "vantaro/tags/id3v1_fields.h"
#include "vantaro/tags/id3v2_fields.h"
#include "vantaro/tags/stream_bytes.h"
#include "vantaro/tags/xiph_fields.h"

#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::string_view ape_mark = "APETAGEX";
constexpr std::string_view lyrics3_mark = "LYRICS200";
constexpr std::size_t lyrics3_size_digits = 6;

std::size_t little_endian(std::string_view bytes) {
    std::size_t result = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        result = result << 8 | static_cast<unsigned char>(bytes[i]);
    return result;
}

class WrappedFile final : public AudioFile {
public:
    WrappedFile(TagLib::IOStream& stream, Format format, std::size_t start)
        : AudioFile(format), stream_(stream), start_(start), end_(stream_size(stream)) {
        if (start > 0) {
            id3v2_room_ = id3v2_size(read_some(stream, 0, 10));
            id3v2_.emplace(read_bytes(stream, 0, id3v2_room_));
        }
        find_id3v1();
        skip_lyrics3();
        find_ape();
        if (format == Format::flac) {
            blocks_.emplace(stream, start);
            if (const std::optional<std::string> comment = blocks_->comment())
                xiph_.emplace(*comment);
        }
    }

    std::vector<TagStore*> tags() override {
        const bool ape_first = customary_is_ape();
        std::vector<TagStore*> result;
        const auto add = [&](TagStore* tag) {
            if (tag != nullptr)
                result.push_back(tag);
        };
        TagStore* ape = ape_ ? &*ape_ : nullptr;
        add(xiph_ ? &*xiph_ : nullptr);
        add(ape_first ? ape : nullptr);
        add(id3v2_ ? &*id3v2_ : nullptr);
        add(ape_first ? nullptr : ape);
        add(id3v1_ ? &*id3v1_ : nullptr);
        return result;
    }

    TagStore* add_customary_tag() override {
        if (format() == Format::flac)
            return xiph_ ? nullptr : &xiph_.emplace();
        if (customary_is_ape())
            return ape_ ? nullptr : &ape_.emplace();
        return id3v2_ ? nullptr : &id3v2_.emplace();
    }

    // From back to front, so that the places in front stay valid.
    void save() override {
        // The one that can fail, before anything is changed.
        const std::string id3v2 = id3v2_ && !id3v2_->empty() ? id3v2_->render(id3v2_room_) : std::string();
        if (id3v1_)
            replace_bytes(stream_, id3v1_start_, id3v1_size, id3v1_->render());
        if (ape_)
            replace_bytes(stream_, ape_start_, ape_size_, ape_->empty() ? "" : ape_->render());
        if (xiph_)
            blocks_->write_comment(xiph_->render());
        if (id3v2_)
            replace_bytes(stream_, 0, id3v2_room_, id3v2);
    }

    std::size_t audio_start() const override { return start_; }
    std::size_t audio_end(std::size_t) const override { return ape_start_; }
    std::string tool() const override { return xiph_ ? clean_text(xiph_->vendor()) : std::string(); }

private:
    bool customary_is_ape() const {
        return format() == Format::wavpack || format() == Format::monkeys_audio
               || format() == Format::musepack;
    }

    void find_id3v1() {
        if (end_ - start_ < id3v1_size)
            return;
        const std::string bytes = read_bytes(stream_, end_ - id3v1_size, id3v1_size);
        // "TAG" stands within "APETAGEX" too.
        if (!bytes.starts_with("TAG") || bytes.starts_with("TAGEX"))
            return;
        id3v1_.emplace(bytes);
        end_ -= id3v1_size;
        id3v1_start_ = end_;
    }

    // Lyrics3 is not edited; it only stands between the others.
    void skip_lyrics3() {
        const std::size_t tail = lyrics3_mark.size() + lyrics3_size_digits;
        if (!id3v1_ || end_ - start_ < tail)
            return;
        const std::string bytes = read_bytes(stream_, end_ - tail, tail);
        if (!bytes.ends_with(lyrics3_mark))
            return;
        std::size_t size = tail;
        for (std::size_t i = 0; i < lyrics3_size_digits; ++i) {
            const auto digit = static_cast<std::size_t>(bytes[i] - '0');
            if (bytes[i] < '0' || bytes[i] > '9')
                return;
            size = i == 0 ? digit : size * 10 + digit;
        }
        size += tail;
        if (size <= end_ - start_)
            end_ -= size;
    }

    void find_ape() {
        ape_start_ = end_;
        if (end_ - start_ < ape_footer_size)
            return;
        const std::string footer = read_bytes(stream_, end_ - ape_footer_size, ape_footer_size);
        if (!footer.starts_with(ape_mark))
            return;
        std::size_t size = little_endian(std::string_view(footer).substr(12, 4));
        if (size < ape_footer_size || size > end_ - start_)
            throw vantaro_io::exception_io_data("The APE tag is damaged");
        // Whatever its flag says, a header is only what looks like one.
        const std::size_t header =
            end_ - start_ - size < ape_footer_size ? end_ : end_ - size - ape_footer_size;
        if (read_some(stream_, header, ape_mark.size()) == ape_mark)
            size += ape_footer_size;
        ape_.emplace(read_bytes(stream_, end_ - size, size));
        ape_start_ = end_ - size;
        ape_size_ = size;
    }

    TagLib::IOStream& stream_;
    std::size_t start_;
    std::size_t end_;
    std::size_t id3v2_room_ = 0;
    std::size_t ape_start_ = 0;
    std::size_t ape_size_ = 0;
    std::size_t id3v1_start_ = 0;
    std::optional<Id3v2Fields> id3v2_;
    std::optional<ApeFields> ape_;
    std::optional<Id3v1Fields> id3v1_;
    std::optional<FlacBlocks> blocks_;
    std::optional<XiphFields> xiph_;
};

} // namespace

std::unique_ptr<AudioFile> open_wrapped_file(TagLib::IOStream& stream, Format format, std::size_t start) {
    return std::make_unique<WrappedFile>(stream, format, start);
}

} // namespace vantaro::core::tags
