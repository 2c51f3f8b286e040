// Ogg: the comment is a packet behind the first one.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/edit_stream.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/xiph/xiph_fields.h"

#include <oggfile.h>

#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr unsigned char flac_comment_type = 4;
constexpr std::size_t flac_header_size = 4;
// A page has a lacing value for each 255 bytes of a packet.
constexpr std::size_t packet_step = whole_block / 256 * 255;
constexpr std::string_view framing_bit = "\x01";

/// TagLib's packets, without the tag that its own file classes would write.
class Packets final : public TagLib::Ogg::File {
public:
    explicit Packets(TagLib::IOStream& stream) : TagLib::Ogg::File(&stream) {}

    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
};

class OggFile final : public AudioFile {
public:
    OggFile(FileBytes& file, const Format& format)
        : AudioFile(format), file_(file), stream_(file), packets_(stream_) {
        if (format.name == "Ogg Vorbis")
            prefix_ = "\x03vorbis";
        else if (format.name == "Opus")
            prefix_ = "OpusTags";
        if (format.name == "Ogg FLAC")
            find_flac_comment();
        const std::string packet = to_bytes(packets_.packet(index_));
        if (!packet.starts_with(prefix_))
            throw vantaro_io::exception_io_data();
        xiph_.emplace(std::string_view(packet).substr(prefix_.size()));
        packet_size_ = packet.size();
    }

    std::vector<TagStore*> tags() override { return {&*xiph_}; }
    TagStore* add_customary_tag() override { return nullptr; }
    std::string tool() const override { return clean_text(xiph_->vendor()); }

    AudioProperties audio() override { return format().describe(file_, {0, file_.size()}); }
    FileEdit edit() override {
        // In Opus an odd first byte makes the rest something to be kept; so is whatever is not zero.
        const bool can_pad = format().name != "Ogg FLAC"
                             && xiph_->remove_padding(format().name == "Ogg Vorbis" ? framing_bit : "");
        const std::string comment = xiph_->render();
        if (format().name == "Ogg FLAC") {
            if (comment.size() > 0xFFFFFF)
                throw vantaro_io::exception_io("The tags are larger than 16 MiB, which FLAC does not allow");
            for (std::size_t i = 1; i < flac_header_size; ++i)
                prefix_[i] = static_cast<char>(comment.size() >> (8 * (flac_header_size - 1 - i)) & 0xFF);
        }
        std::string packet = prefix_ + comment;
        if (can_pad)
            packet.resize(padded_size(packet.size(), packet_size_, {.step = packet_step}));
        packets_.setPacket(index_, to_byte_vector(packet));
        if (!packets_.TagLib::Ogg::File::save())
            throw vantaro_io::exception_io();
        return stream_.edit();
    }

private:
    // The packets behind the first are the metadata blocks.
    void find_flac_comment() {
        for (bool last = false; !last; ++index_) {
            const std::string packet = to_bytes(packets_.packet(index_));
            if (packet.size() < flac_header_size)
                throw vantaro_io::exception_io_data();
            const auto type = static_cast<unsigned char>(packet[0]);
            last = (type & 0x80) != 0;
            if ((type & 0x7F) == flac_comment_type) {
                prefix_ = packet.substr(0, flac_header_size);
                return;
            }
        }
        throw vantaro_io::exception_io_data();
    }

    FileBytes& file_;
    EditStream stream_;
    Packets packets_;
    unsigned index_ = 1;
    std::size_t packet_size_ = 0; ///< in the file
    std::string prefix_;          ///< what stands in front of the comment in its packet
    std::optional<XiphFields> xiph_;
};

} // namespace

std::unique_ptr<AudioFile> open_ogg_file(FileBytes& file, const Format& format, std::size_t) {
    return std::make_unique<OggFile>(file, format);
}

} // namespace vantaro::core::tags
