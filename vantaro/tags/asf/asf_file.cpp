// ASF, which TagLib reads and writes with the attributes' types.
#include "host/api/exceptions.h"
#include "vantaro/tags/asf/asf_fields.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/edit_stream.h"

#include "vantaro/tags/asf/asf_header.h"

#include <asffile.h>

#include <cstdint>
#include <optional>

namespace vantaro::core::tags {

namespace {

class AsfFile final : public AudioFile {
public:
    AsfFile(FileBytes& bytes, const Format& format)
        : AudioFile(format), bytes_(bytes), stream_(bytes), file_(&at_start(stream_), false) {
        if (!file_.isValid() || file_.tag() == nullptr)
            throw vantaro_io::exception_io_data();
        restore_texts(stream_);
        restore_order(stream_);
        fields_.emplace(*file_.tag());
    }

    std::vector<TagStore*> tags() override { return {&*fields_}; }
    TagStore* add_customary_tag() override { return nullptr; }
    AudioProperties audio() override { return describe_asf(bytes_, {0, bytes_.size()}); }
    FileEdit edit() override {
        const std::uint64_t room = asf_header_size(stream_);
        if (!file_.save())
            throw vantaro_io::exception_io();
        pad_asf_header(stream_, room);
        return stream_.edit();
    }

private:
    static EditStream& at_start(EditStream& stream) {
        check_asf(stream);
        stream.seek(0, TagLib::IOStream::Beginning); // where TagLib's ASF expects it
        return stream;
    }
    void restore_texts(TagLib::IOStream& stream) {
        const LongTexts texts = long_texts(stream);
        const auto whole = [](const LongText& text) {
            return TagLib::String(std::wstring(text.text.begin(), text.text.end()));
        };
        for (const LongText& text : texts.attributes) {
            TagLib::ASF::AttributeList values = file_.tag()->attribute(to_taglib(text.name));
            if (text.index >= values.size()
                || values[static_cast<unsigned>(text.index)].type() != TagLib::ASF::Attribute::UnicodeType)
                throw vantaro_io::exception_io_data();
            // Only the text is another one.
            const TagLib::ASF::Attribute old = values[static_cast<unsigned>(text.index)];
            TagLib::ASF::Attribute& value = values[static_cast<unsigned>(text.index)];
            value = TagLib::ASF::Attribute(whole(text));
            value.setLanguage(old.language());
            value.setStream(old.stream());
            file_.tag()->setAttribute(to_taglib(text.name), values);
        }
        for (const LongText& text : texts.description) {
            if (text.name == "Title")
                file_.tag()->setTitle(whole(text));
            else if (text.name == "Author")
                file_.tag()->setArtist(whole(text));
            else if (text.name == "Copyright")
                file_.tag()->setCopyright(whole(text));
            else
                file_.tag()->setComment(whole(text));
        }
    }

    // TagLib lists the values of an attribute as their objects stand in the file, but writes the first one to
    // the description and the others to the library, which usually stands before it: each save would turn
    // the order of the values by one.
    void restore_order(TagLib::IOStream& stream) {
        for (const auto& [name, count] : values_behind_library(stream)) {
            TagLib::ASF::AttributeList values = file_.tag()->attribute(to_taglib(name));
            if (values.size() <= count)
                continue;
            for (std::size_t i = 0; i < count; ++i) {
                const TagLib::ASF::Attribute last = values.back();
                values.erase(--values.end());
                values.prepend(last);
            }
            file_.tag()->setAttribute(to_taglib(name), values);
        }
    }

    FileBytes& bytes_;
    EditStream stream_;
    TagLib::ASF::File file_;
    std::optional<AsfFields> fields_;
};

} // namespace

std::unique_ptr<AudioFile> open_asf_file(FileBytes& file, const Format& format, std::size_t) {
    return std::make_unique<AsfFile>(file, format);
}

} // namespace vantaro::core::tags
