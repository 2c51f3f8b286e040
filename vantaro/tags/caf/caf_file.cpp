// CAF: a list of chunks, of which "info" holds the tag.
//
// https://developer.apple.com/library/archive/documentation/MusicAudio/Reference/CAFSpec
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/caf/caf_fields.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/riff/chunk_audio.h"
#include "vantaro/tags/riff/chunk_writer.h"

#include <algorithm>
#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr ChunkForm form{.marks = {"caff"},
                         .header_size = 8, // with version and flags
                         .is_big_endian = true,
                         .size_width = 8,
                         .has_outer_size = false,
                         .pads = false,
                         .audio = {"data"},
                         .open_audio_stays = true};

struct Codec {
    std::string_view id;
    std::string_view name;
    bool lossless;
};

constexpr Codec codecs[] = {
    {"lpcm", "PCM", true},   {"alac", "ALAC", true},  {"flac", "FLAC", true},  {"aac ", "AAC", false},
    {".mp1", "MP1", false},  {".mp2", "MP2", false},  {".mp3", "MP3", false},  {"opus", "Opus", false},
    {"ulaw", "ulaw", false}, {"alaw", "alaw", false}, {"ima4", "ima4", false},
};

/// Room beyond is left alone: it would have to be written anew.
constexpr std::size_t most_room = 16 << 20;

class CafFile final : public AudioFile {
public:
    CafFile(FileBytes& file, const Format& format, std::size_t start)
        : AudioFile(format), file_(file), chunks_(file, form, start), info_chunk_(chunks_.find("info")) {
        if (chunks_.cut_off() == "info")
            throw vantaro_io::exception_io_data("The chunk \"info\" is longer than the file");
        if (info_chunk_ != nullptr)
            info_.emplace(chunks_.bytes(*info_chunk_));
    }

    std::vector<TagStore*> tags() override {
        return info_ ? std::vector<TagStore*>{&*info_} : std::vector<TagStore*>();
    }
    TagStore* add_customary_tag() override { return info_ ? nullptr : &info_.emplace(); }

    FileEdit edit() override {
        ChunkWriter writer(chunks_);
        if (info_)
            put_info(writer, info_->empty() ? "" : info_->render());
        Rewriting rewriting(file_);
        writer.write(rewriting);
        return rewriting.finish();
    }

    AudioProperties audio() override;

private:
    // In front of other chunks the padding is a chunk "free" behind it; several become one.
    void put_info(ChunkWriter& writer, const std::string& info) {
        writer.put(info_chunk_, "info", info);
        if (info_chunk_ == nullptr || info.empty() || info_chunk_ == &chunks_.chunks().back())
            return;
        const Chunk* last = info_chunk_;
        while (last != &chunks_.chunks().back() && (last + 1)->name == "free"
               && (last + 1)->end() - info_chunk_->start <= most_room)
            writer.put(++last, "free", "");
        const std::size_t header = form.chunk_header_size();
        const std::size_t needed = header + info.size();
        const std::size_t padding =
            padded_size(needed, last->end() - info_chunk_->start, {.header = header}) - needed;
        if (padding > 0)
            writer.add_behind(*last, "free", std::string(padding - header, '\0'));
    }

    double seconds(std::string_view description, double rate, std::size_t bytes) const;

    FileBytes& file_;
    const ChunkList chunks_;
    const Chunk* const info_chunk_;
    std::optional<CafFields> info_;
};

// By the table of packets, or by packets that are all alike.
double CafFile::seconds(std::string_view description, double rate, std::size_t bytes) const {
    constexpr std::size_t table_size = 16;
    const Chunk* table = chunks_.find("pakt");
    if (table != nullptr && table->size >= table_size) {
        const auto frames =
            static_cast<std::int64_t>(big_endian(chunks_.head(*table, table_size).substr(8, 8)));
        if (frames > 0)
            return static_cast<double>(frames) / rate;
    }
    const std::uint64_t packet_bytes = big_endian(description.substr(16, 4));
    const std::uint64_t packet_frames = big_endian(description.substr(20, 4));
    return packet_bytes == 0
               ? 0
               : static_cast<double>(bytes / packet_bytes) * static_cast<double>(packet_frames) / rate;
}

AudioProperties CafFile::audio() {
    constexpr std::size_t description_size = 32;
    constexpr std::size_t edit_count_size = 4; // in front of the audio
    constexpr std::uint64_t is_float = 1;
    constexpr int alac_bits[] = {0, 16, 20, 24, 32};
    const Chunk* chunk = chunks_.find("desc");
    const Chunk* data = chunks_.find_audio();
    if (chunk == nullptr || chunk->size < description_size || data == nullptr)
        throw vantaro_io::exception_io_data("The chunks of the CAF file that describe the audio are missing");
    const std::string_view description = chunks_.head(*chunk, description_size);
    const std::string_view id = description.substr(8, 4);
    const std::uint64_t flags = big_endian(description.substr(12, 4));
    const auto* codec = std::ranges::find(codecs, id, &Codec::id);
    const bool known = codec != std::end(codecs);
    AudioProperties result{.codec = std::string(known ? codec->name : ""),
                           .encoding = known && codec->lossless ? "lossless" : "lossy"};
    const double rate = float64(big_endian(description.substr(0, 8)));
    set_rate(result, rate, big_endian(description.substr(24, 4)));
    if (id == "lpcm") {
        result.profile = (flags & is_float) != 0 ? "floating point" : "";
        result.bits_per_sample = static_cast<int>(big_endian(description.substr(28, 4)) & 0xFF);
    } else if (id == "alac" && flags < std::size(alac_bits)) {
        result.bits_per_sample = alac_bits[flags];
    }
    const std::size_t bytes = data->size - std::min(data->size, edit_count_size);
    set_seconds(result, seconds(description, rate, bytes), bytes);
    return result;
}

} // namespace

std::unique_ptr<AudioFile> open_caf_file(FileBytes& file, const Format& format, std::size_t start) {
    return std::make_unique<CafFile>(file, format, start);
}

} // namespace vantaro::core::tags
