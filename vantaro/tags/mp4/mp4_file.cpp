// MP4: the item list within moov.udta.meta.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/edit_stream.h"
#include "vantaro/tags/mp4/mp4_check.h"
#include "vantaro/tags/mp4/mp4_data.h"
#include "vantaro/tags/mp4/mp4_fields.h"
#include "vantaro/tags/mp4/mp4_room.h"
#include "vantaro/tags/raw_file.h"
#include "vantaro/tags/stream_bytes.h"

#include <mp4atom.h>

#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 8;

class Mp4File final : public AudioFile {
public:
    Mp4File(FileBytes& bytes, const Format& format) : AudioFile(format), bytes_(bytes), stream_(bytes) {
        check_mp4(stream_);
        RawFile file(stream_);
        TagLib::MP4::Atoms atoms(&file);
        if (atoms.find("moov") == nullptr)
            throw vantaro_io::exception_io_data();
        if (const TagLib::MP4::Atom* list = atoms.find("moov", "udta", "meta", "ilst"))
            fields_.emplace(content(*list));
    }

    std::vector<TagStore*> tags() override {
        return fields_ ? std::vector<TagStore*>{&*fields_} : std::vector<TagStore*>();
    }
    TagStore* add_customary_tag() override { return fields_ ? nullptr : &fields_.emplace(); }

    // TagLib itself would lose atoms of unknown types and all but one of those with the same name, and would
    // leave fragments where they were.
    AudioProperties audio() override { return describe_mp4(bytes_, {0, bytes_.size()}); }
    FileEdit edit() override {
        const std::string list = make_atom("ilst", fields_ ? fields_->render() : std::string());
        write_mp4_list(stream_, make_mp4_room(stream_, list.size()), list);
        return stream_.edit();
    }

private:
    std::string content(const TagLib::MP4::Atom& atom) {
        const auto size = static_cast<std::size_t>(atom.length);
        if (atom.offset < 0 || atom.length < static_cast<long>(header_size))
            throw vantaro_io::exception_io_data();
        return read_bytes(stream_, static_cast<std::size_t>(atom.offset) + header_size, size - header_size);
    }

    FileBytes& bytes_;
    EditStream stream_;
    std::optional<Mp4Fields> fields_;
};

} // namespace

std::unique_ptr<AudioFile> open_mp4_file(FileBytes& file, const Format& format, std::size_t) {
    return std::make_unique<Mp4File>(file, format);
}

} // namespace vantaro::core::tags
