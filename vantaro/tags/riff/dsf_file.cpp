// DSF: chunks of audio, and an ID3v2 tag at the end to which the first chunk points.
//
// https://dsd-guide.com/sites/default/files/white-papers/DSFFileFormatSpec_E.pdf
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/id3v2/id3v2_fields.h"
#include "vantaro/tags/riff/chunk_audio.h"

#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t pointer_size = 8;
constexpr ChunkForm form{.marks = {"DSD "},
                         .header_size = 28, // the first chunk
                         .size_width = 8,
                         .has_outer_size = false,
                         .size_counts_header = true,
                         .pads = false,
                         .audio = {"data"}};

class DsfFile final : public AudioFile {
public:
    DsfFile(FileBytes& file, const Format& format, std::size_t start)
        : AudioFile(format), file_(file), chunks_(file, form, start), start_(start) {
        const std::size_t place = little_endian(file.bytes(pointer_place(), pointer_size));
        if (place == 0 || place == file.size() - start)
            return;
        if (place > file.size() - start)
            throw vantaro_io::exception_io_data(
                "The place that the DSF file names for its tag is beyond its end");
        const Chunk* audio = chunks_.find_audio();
        if (audio == nullptr || (!audio->is_open && place + start < audio->end()))
            throw vantaro_io::exception_io_data(
                "The place that the DSF file names for its tag is in its audio");
        tag_start_ = start + place;
        room_ = id3v2_size(file.some(tag_start_, id3v2_header_size));
        if (room_ == 0 || room_ > file.size() - tag_start_)
            throw vantaro_io::exception_io_data(
                "There is no whole ID3v2 tag at the place that the DSF file names");
        id3v2_.emplace(file, tag_start_, room_);
    }

    std::vector<TagStore*> tags() override {
        return id3v2_ ? std::vector<TagStore*>{&*id3v2_} : std::vector<TagStore*>();
    }
    TagStore* add_customary_tag() override { return id3v2_ ? nullptr : &id3v2_.emplace(); }

    AudioProperties audio() override {
        constexpr std::size_t format_size = 40;
        const Chunk* chunk = chunks_.find("fmt ");
        const Chunk* data = chunks_.find_audio();
        if (chunk == nullptr || chunk->size < format_size || data == nullptr)
            throw vantaro_io::exception_io_data(
                "The chunks of the DSF file that describe the audio are missing");
        const std::string_view bytes = chunks_.head(*chunk, format_size);
        const auto number = [&](std::size_t at, std::size_t size) {
            return little_endian(bytes.substr(at, size));
        };
        AudioProperties result{.codec = "DSD", .encoding = "lossless"};
        set_rate(result, static_cast<double>(number(16, 4)), number(12, 4));
        result.bits_per_sample = 1; // the header's 8 is the order of the bits in a byte
        const std::uint64_t samples = number(24, 8);
        set_seconds(result, static_cast<double>(samples) / result.sample_rate,
                    samples / 8 * static_cast<std::uint64_t>(result.channels));
        return result;
    }

    FileEdit edit() override {
        std::string tag;
        if (id3v2_ && !id3v2_->empty())
            for (const Part& part : id3v2_->render(room_))
                tag += part.bytes();
        const std::size_t place = room_ == 0 ? file_.size() : tag_start_;
        const std::size_t size = file_.size() - start_ - room_ + tag.size();
        Rewriting rewriting(file_);
        rewriting.replace(start_ + form.chunk_header_size(), 2 * pointer_size,
                          little_endian_bytes(size, pointer_size)
                              + little_endian_bytes(tag.empty() ? 0 : place - start_, pointer_size));
        rewriting.replace(place, room_, std::move(tag));
        return rewriting.finish();
    }

private:
    std::size_t pointer_place() const { return start_ + form.chunk_header_size() + pointer_size; }

    FileBytes& file_;
    const ChunkList chunks_;
    const std::size_t start_;
    std::size_t tag_start_ = 0;
    std::size_t room_ = 0; ///< of the tag in the file
    std::optional<Id3v2Fields> id3v2_;
};

} // namespace

std::unique_ptr<AudioFile> open_dsf_file(FileBytes& file, const Format& format, std::size_t start) {
    return std::make_unique<DsfFile>(file, format, start);
}

} // namespace vantaro::core::tags
