// WAV and AIFF: an ID3v2 tag is a chunk, and WAV has LIST INFO.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/edit_stream.h"
#include "vantaro/tags/id3v2/id3v2_fields.h"
#include "vantaro/tags/riff/info_fields.h"
#include "vantaro/tags/stream_bytes.h"

#include <rifffile.h>

#include <algorithm>
#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t chunk_header_size = 8;
// Sizes have 32 bits, and so have TagLib's places of chunks. Even, for the byte that pads a chunk.
constexpr std::size_t largest_file = 0xFFFFFFFE;
constexpr std::string_view info_mark = "INFO";

/// No chunk when there is no content.
std::size_t chunk_size(std::size_t content) {
    return content == 0 ? 0 : chunk_header_size + content + content % 2;
}

/// TagLib's chunks, without the tags that its own file classes would write.
class Chunks final : public TagLib::RIFF::File {
public:
    Chunks(TagLib::IOStream& stream, const Format& format)
        : TagLib::RIFF::File(&stream, format.name == "WAV" ? LittleEndian : BigEndian) {}

    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }

    unsigned count() { return chunkCount(); }
    std::string name(unsigned i) { return to_bytes(chunkName(i)); }
    std::size_t place(unsigned i) { return chunkOffset(i); }
    std::string data(unsigned i) { return to_bytes(chunkData(i)); }
    void put(unsigned i, const std::string& bytes) { setChunkData(i, to_byte_vector(bytes)); }
    void append(const std::string& name, const std::string& bytes) {
        setChunkData(to_byte_vector(name), to_byte_vector(bytes));
    }
    void remove(unsigned i) { removeChunk(i); }
};

class RiffFile final : public AudioFile {
public:
    RiffFile(FileBytes& file, const Format& format)
        : AudioFile(format), file_(file), stream_(file), chunks_(stream_, format) {
        for (unsigned i = 0; i < chunks_.count(); ++i) {
            const std::string name = chunks_.name(i);
            if (!id3v2_ && upper_name(name) == "ID3 ") {
                const std::string bytes = chunks_.data(i);
                if (id3v2_size(bytes) == 0 || id3v2_size(bytes) > bytes.size())
                    throw vantaro_io::exception_io_data("The ID3v2 tag is damaged");
                id3v2_.emplace(file, chunks_.place(i), bytes.size());
                id3v2_room_ = bytes.size();
                id3v2_name_ = name;
            } else if (!info_ && format.name == "WAV" && name == "LIST") {
                const std::string bytes = chunks_.data(i);
                if (!bytes.starts_with(info_mark))
                    continue;
                info_.emplace(std::string_view(bytes).substr(info_mark.size()));
                info_room_ = bytes.size();
            }
        }
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

    AudioProperties audio() override { return format().describe(file_, {0, file_.size()}); }
    FileEdit edit() override {
        const std::string info = info_ && !info_->empty() ? std::string(info_mark) + info_->render() : "";
        const std::string id3v2 = render_id3v2_beside(info.size());
        if (id3v2_)
            put_chunk([this](unsigned i) { return chunks_.name(i) == id3v2_name_; }, id3v2_name_, id3v2);
        if (info_)
            put_chunk(
                [this](unsigned i) {
                    return chunks_.name(i) == "LIST" && chunks_.data(i).starts_with(info_mark);
                },
                "LIST", info);
        return stream_.edit();
    }

private:
    // Throws when there is no place for it in the file with an INFO of this size. Padding gets what is left.
    std::string render_id3v2_beside(std::size_t info_size) {
        const std::size_t size = stream_size(stream_);
        const std::size_t others =
            size - chunk_size(id3v2_room_) - chunk_size(info_room_) + chunk_size(info_size);
        std::string bytes;
        if (id3v2_ && !id3v2_->empty()) {
            const std::size_t used = others + chunk_header_size;
            const std::size_t left = used < largest_file ? (largest_file - used) / 2 * 2 : 0;
            for (const Part& part :
                 id3v2_->render(id3v2_room_, id3v2_room_ == 0 ? chunk_header_size : 0, left))
                bytes += part.bytes();
        }
        if (std::max(size, others + chunk_size(bytes.size())) > largest_file)
            throw vantaro_io::exception_io("WAV and AIFF files cannot be larger than 4 GiB");
        return bytes;
    }

    template <class IsChunk>
    void put_chunk(const IsChunk& is_chunk, const std::string& name, const std::string& bytes) {
        unsigned i = 0;
        while (i < chunks_.count() && !is_chunk(i))
            ++i;
        if (i < chunks_.count())
            bytes.empty() ? chunks_.remove(i) : chunks_.put(i, bytes);
        else if (!bytes.empty())
            chunks_.append(name, bytes);
    }

    FileBytes& file_;
    EditStream stream_;
    Chunks chunks_;
    std::size_t id3v2_room_ = 0; ///< the content of the chunk
    std::size_t info_room_ = 0;  ///< likewise
    std::string id3v2_name_ = "ID3 ";
    std::optional<Id3v2Fields> id3v2_;
    std::optional<InfoFields> info_;
};

} // namespace

std::unique_ptr<AudioFile> open_riff_file(FileBytes& file, const Format& format, std::size_t) {
    return std::make_unique<RiffFile>(file, format);
}

} // namespace vantaro::core::tags
