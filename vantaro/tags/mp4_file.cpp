// MP4: the item list within moov.udta.meta.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/mp4_check.h"
#include "vantaro/tags/mp4_data.h"
#include "vantaro/tags/mp4_fields.h"
#include "vantaro/tags/mp4_room.h"
#include "vantaro/tags/raw_file.h"
#include "vantaro/tags/stream_bytes.h"

#include <mp4atom.h>

#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 8;

class Mp4File final : public AudioFile {
public:
    explicit Mp4File(TagLib::IOStream& stream) : AudioFile(Format::mp4), stream_(stream) {
        check_mp4(stream);
        RawFile file(stream);
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
    void save() override {
        const std::string list = make_atom("ilst", fields_ ? fields_->render() : std::string());
        write_mp4_list(stream_, make_mp4_room(stream_, list.size()), list);
    }

private:
    std::string content(const TagLib::MP4::Atom& atom) {
        const auto size = static_cast<std::size_t>(atom.length);
        if (atom.offset < 0 || atom.length < static_cast<long>(header_size))
            throw vantaro_io::exception_io_data();
        return read_bytes(stream_, static_cast<std::size_t>(atom.offset) + header_size, size - header_size);
    }

    TagLib::IOStream& stream_;
    std::optional<Mp4Fields> fields_;
};

} // namespace

std::unique_ptr<AudioFile> open_mp4_file(TagLib::IOStream& stream) {
    return std::make_unique<Mp4File>(stream);
}

} // namespace vantaro::core::tags
