// MP4: the item list within moov.udta.meta.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/mp4_check.h"
#include "vantaro/tags/mp4_fields.h"
#include "vantaro/tags/raw_file.h"
#include "vantaro/tags/stream_bytes.h"

#include <mp4atom.h>
#include <mp4file.h>
#include <mp4tag.h>

#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 8;
// A text item has the header of its own and that of the data.
constexpr std::size_t smallest_text_item = 24;

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

    // TagLib lays out the file, with all that depends on the size of the list, for one item as large as all
    // atoms together. The atoms then take its place as they are; TagLib itself would lose those of unknown
    // types and all but one of those with the same name.
    void save() override {
        const std::string bytes = fields_ ? fields_->render() : std::string();
        {
            // In a file with overlapping atoms TagLib could take anything for a table of offsets, and its
            // length for that of the table.
            FixedStream fixed(stream_);
            TagLib::MP4::File file(&fixed, false);
            if (!file.isValid() || file.tag() == nullptr)
                throw vantaro_io::exception_io_data();
            const TagLib::MP4::ItemMap items = file.tag()->itemMap();
            for (const auto& [name, item] : items)
                file.tag()->removeItem(name);
            if (bytes.size() >= smallest_text_item)
                file.tag()->setItem("\251nam", TagLib::StringList(to_taglib(
                                                   std::string(bytes.size() - smallest_text_item, ' '))));
            if (!file.save())
                throw vantaro_io::exception_io();
        }
        RawFile file(stream_);
        TagLib::MP4::Atoms atoms(&file);
        const TagLib::MP4::Atom* list = atoms.find("moov", "udta", "meta", "ilst");
        if (list == nullptr || static_cast<std::size_t>(list->length) != bytes.size() + header_size)
            throw vantaro_io::exception_io("The item list could not be written");
        replace_bytes(stream_, static_cast<std::size_t>(list->offset) + header_size, bytes.size(), bytes);
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
