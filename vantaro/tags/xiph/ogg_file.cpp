// Ogg: the comment is a packet behind the first one of the stream of audio.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/xiph/ogg_audio.h"
#include "vantaro/tags/xiph/ogg_stream.h"
#include "vantaro/tags/xiph/xiph_fields.h"

#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr unsigned char flac_comment_type = 4;
constexpr std::size_t flac_header_size = 4;
constexpr std::size_t flac_info_at = 13; ///< in the first packet
// A page has a lacing value for each 255 bytes of a packet.
constexpr std::size_t packet_step = whole_block / 256 * 255;

/// What the audio formats put into Ogg.
struct Codec {
    std::string_view format; ///< the name of its row
    std::string_view prefix; ///< of the packet of the comment
    std::string_view mark;   ///< behind the comments
    std::size_t headers;     ///< packets in front of the audio; 0 for those that say it themselves
    AudioProperties (*describe)(const OggAudio& audio);
};

constexpr Codec codecs[] = {
    {"Ogg Vorbis", "\x03vorbis", "\x01", 3, describe_vorbis}, // with the framing bit
    {"Opus", "OpusTags", "", 2, describe_opus},
    {"Speex", "", "", 2, describe_speex},
    {"Ogg FLAC", "", "", 0, describe_ogg_flac},
};

const Codec& codec_of(const Format& format) {
    for (const Codec& codec : codecs)
        if (codec.format == format.name)
            return codec;
    throw vantaro_io::exception_io_data("The file has no stream of audio with tags that are known");
}

const OggPage& page_of(const std::vector<OggPage>& streams, FileBytes& file, const Format& format) {
    for (const OggPage& page : streams)
        if (has_signature(format, file.some(page.start, signature_area)))
            return page;
    throw vantaro_io::exception_io_data("The file has no audio of the format that its name says");
}

class OggFile final : public AudioFile {
public:
    OggFile(FileBytes& file, const Format& format, std::size_t start)
        : AudioFile(format), file_(file), codec_(codec_of(format)), streams_(first_ogg_pages(file, start)),
          first_page_(page_of(streams_, file, format)), stream_(file, first_page_), prefix_(codec_.prefix),
          headers_(codec_.headers) {
        if (is_flac())
            find_flac_comment();
        const std::string packet = stream_.packet_bytes(index_);
        if (!packet.starts_with(prefix_))
            throw vantaro_io::exception_io_data("The comment is not where it should be");
        xiph_.emplace(std::string_view(packet).substr(prefix_.size()));
        packet_size_ = packet.size();
    }

    std::vector<TagStore*> tags() override { return {&*xiph_}; }
    TagStore* add_customary_tag() override { return nullptr; }
    std::string tool() const override { return clean_text(xiph_->vendor()); }

    AudioProperties audio() override {
        const std::string head = stream_.packet_bytes(0);
        std::size_t taken = is_flac() ? flac_blocks_ : 0;
        for (std::size_t i = 0; i < codec_.headers; ++i)
            taken += stream_.packet_size(i);
        const std::string_view facts = is_flac() && head.size() > flac_info_at + flac_header_size
                                           ? std::string_view(head).substr(flac_info_at + flac_header_size)
                                           : std::string_view(head);
        return codec_.describe({facts, first_page_.granule, last_granule(file_, streams_, first_page_.serial),
                                streams_.size() > 1 ? 0 : file_.size() - taken});
    }

    FileEdit edit() override {
        // In Opus an odd first byte makes the rest something to be kept; so is whatever is not zero.
        const bool can_pad = !is_flac() && xiph_->remove_padding(codec_.mark);
        const std::string comment = xiph_->render();
        if (is_flac()) {
            if (comment.size() > 0xFFFFFF)
                throw vantaro_io::exception_io("The tags are larger than 16 MiB, which FLAC does not allow");
            prefix_ = prefix_.substr(0, 1) + big_endian_bytes(comment.size(), 3);
        }
        std::string packet = prefix_ + comment;
        if (can_pad)
            packet.resize(padded_size(packet.size(), packet_size_, {.step = packet_step}));
        Rewriting rewriting(file_);
        stream_.replace(rewriting, index_, packet, headers_);
        return rewriting.finish();
    }

private:
    bool is_flac() const { return codec_.headers == 0; }

    // The packets behind the first are the metadata blocks.
    void find_flac_comment() {
        if (stream_.packet_size(0) > flac_info_at + flac_header_size)
            flac_blocks_ = stream_.packet_size(0) - flac_info_at - flac_header_size;
        index_ = 0;
        headers_ = 1;
        for (bool last = false; !last; ++headers_) {
            const std::string packet = stream_.packet_bytes(headers_);
            if (packet.size() < flac_header_size)
                throw vantaro_io::exception_io_data("A metadata block is too short");
            const auto type = static_cast<unsigned char>(packet[0]);
            last = (type & 0x80) != 0;
            flac_blocks_ += packet.size() - flac_header_size;
            if ((type & 0x7F) == flac_comment_type && index_ == 0) {
                index_ = headers_;
                prefix_ = packet.substr(0, flac_header_size);
            }
        }
        if (index_ == 0)
            throw vantaro_io::exception_io_data("The metadata has no comment");
    }

    FileBytes& file_;
    const Codec& codec_;
    std::vector<OggPage> streams_; ///< those that begin together, by their first pages
    const OggPage first_page_;
    OggStream stream_;
    std::size_t index_ = 1;
    std::string prefix_; ///< what stands in front of the comment in its packet
    std::size_t headers_;
    std::size_t flac_blocks_ = 0; ///< the size of their contents
    std::size_t packet_size_ = 0; ///< in the file
    std::optional<XiphFields> xiph_;
};

} // namespace

std::unique_ptr<AudioFile> open_ogg_file(FileBytes& file, const Format& format, std::size_t start) {
    return std::make_unique<OggFile>(file, format, start);
}

} // namespace vantaro::core::tags
