// WAV, RF64, AIFF and DSDIFF: an ID3v2 tag is a chunk, and WAV and RF64 have LIST INFO.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/field_places.h"
#include "vantaro/tags/id3v2/id3v2_fields.h"
#include "vantaro/tags/riff/chunk_audio.h"
#include "vantaro/tags/riff/chunk_writer.h"
#include "vantaro/tags/riff/info_fields.h"

#include <algorithm>
#include <optional>

namespace vantaro::core::tags {

namespace {

// Sizes have 32 bits. Even, for the byte that pads a chunk.
constexpr std::size_t largest_file = 0xFFFFFFFE;
constexpr std::string_view too_large = "WAV and AIFF files cannot be larger than 4 GiB";
constexpr std::string_view info_mark = "INFO";

struct RiffKind {
    std::string_view format;
    ChunkForm form;
    AudioProperties (*describe)(const ChunkList& chunks);
    bool has_info;
};

constexpr RiffKind kinds[] = {
    {"WAV",
     {.marks = {"RIFF"},
      .types = {"WAVE"},
      .audio = {"data"},
      .largest_file = largest_file,
      .too_large = too_large},
     describe_wav,
     true},
    {"RF64",
     {.marks = {"RF64", "BW64"}, .types = {"WAVE"}, .has_sizes64 = true, .audio = {"data"}},
     describe_wav,
     true},
    {"AIFF",
     {.marks = {"FORM"},
      .types = {"AIFF", "AIFC"},
      .is_big_endian = true,
      .audio = {"SSND"},
      .largest_file = largest_file,
      .too_large = too_large},
     describe_aiff,
     false},
    {"DSDIFF",
     {.marks = {"FRM8"},
      .types = {"DSD "},
      .header_size = 16,
      .is_big_endian = true,
      .size_width = 8,
      .audio = {"DSD ", "DST "}},
     describe_dsdiff,
     false},
};

const RiffKind& kind_of(const Format& format) {
    return *std::ranges::find(kinds, format.name, &RiffKind::format);
}

bool is_id3v2(std::string_view name) {
    return same_text(name, "ID3 ");
}

class RiffFile final : public AudioFile {
public:
    RiffFile(FileBytes& file, const Format& format, std::size_t start)
        : AudioFile(format), file_(file), kind_(kind_of(format)), chunks_(file, kind_.form, start) {
        if (is_id3v2(chunks_.cut_off()))
            throw vantaro_io::exception_io_data("The chunk with the ID3v2 tag is longer than the file");
        for (const Chunk& chunk : chunks_.chunks())
            if (id3v2_chunk_ == nullptr && is_id3v2(chunk.name))
                take_id3v2(chunk);
            else if (info_chunk_ == nullptr && kind_.has_info && chunk.name == "LIST"
                     && chunks_.head(chunk, info_mark.size()) == info_mark)
                take_info(chunk);
    }

    std::vector<TagStore*> tags() override {
        std::vector<TagStore*> result;
        if (id3v2_)
            result.push_back(&*id3v2_);
        if (info_)
            result.push_back(&*info_);
        return result;
    }
    TagStore* add_customary_tag() override { return id3v2_ ? nullptr : &id3v2_.emplace(); }
    AudioProperties audio() override { return kind_.describe(chunks_); }

    FileEdit edit() override {
        const std::string info = info_ && !info_->empty() ? std::string(info_mark) + info_->render() : "";
        const std::string id3v2 = render_id3v2_beside(info.size());
        check_index(id3v2.size());
        ChunkWriter writer(chunks_);
        if (id3v2_)
            writer.put(id3v2_chunk_, "ID3 ", id3v2);
        if (info_)
            writer.put(info_chunk_, "LIST", info);
        Rewriting rewriting(file_);
        writer.write(rewriting);
        return rewriting.finish();
    }

private:
    void take_id3v2(const Chunk& chunk) {
        const std::size_t size = id3v2_size(chunks_.head(chunk, id3v2_header_size));
        if (size == 0 || size > chunk.size)
            throw vantaro_io::exception_io_data("The ID3v2 tag is damaged");
        id3v2_.emplace(file_, chunk.body, chunk.size);
        id3v2_chunk_ = &chunk;
    }
    void take_info(const Chunk& chunk) {
        info_.emplace(chunks_.bytes(chunk).substr(info_mark.size()));
        info_chunk_ = &chunk;
    }

    // Throws when there is no place for it in the file with an INFO of this size. Padding gets what is left.
    std::string render_id3v2_beside(std::size_t info_size) {
        const ChunkForm& form = kind_.form;
        const std::size_t room = id3v2_chunk_ == nullptr ? 0 : id3v2_chunk_->size;
        const std::size_t others = file_.size() - (id3v2_chunk_ == nullptr ? 0 : id3v2_chunk_->total())
                                   - (info_chunk_ == nullptr ? 0 : info_chunk_->total())
                                   + chunk_total(form, info_size);
        std::string bytes;
        if (id3v2_ && !id3v2_->empty()) {
            const std::size_t header = form.chunk_header_size();
            const std::size_t used = others + header;
            const std::size_t left = used < form.largest_file ? (form.largest_file - used) / 2 * 2 : 0;
            for (const Part& part : id3v2_->render(room, room == 0 ? header : 0, left))
                bytes += part.bytes();
        }
        if (std::max(file_.size(), others + chunk_total(form, bytes.size())) > form.largest_file)
            throw vantaro_io::exception_io(std::string(form.too_large));
        return bytes;
    }

    // DSDIFF can have an index of places in the file.
    void check_index(std::size_t id3v2_size) const {
        const Chunk* index = chunks_.find("DSTI");
        const Chunk* sound = chunks_.find("DST ");
        if (index != nullptr && sound != nullptr && id3v2_chunk_ != nullptr
            && id3v2_chunk_->start < sound->start
            && chunk_total(kind_.form, id3v2_size) != id3v2_chunk_->total())
            throw vantaro_io::exception_io(
                "The tag stands in front of audio that has an index, and cannot become longer or shorter");
    }

    FileBytes& file_;
    const RiffKind& kind_;
    const ChunkList chunks_;
    const Chunk* id3v2_chunk_ = nullptr;
    const Chunk* info_chunk_ = nullptr;
    std::optional<Id3v2Fields> id3v2_;
    std::optional<InfoFields> info_;
};

} // namespace

std::unique_ptr<AudioFile> open_riff_file(FileBytes& file, const Format& format, std::size_t start) {
    return std::make_unique<RiffFile>(file, format, start);
}

} // namespace vantaro::core::tags
