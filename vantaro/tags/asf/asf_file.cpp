// ASF: a header object, whose attributes are the tag, and behind it the data, which stays as it is.
#include "vantaro/tags/asf/asf_fields.h"
#include "vantaro/tags/audio_file.h"

namespace vantaro::core::tags {

namespace {

class AsfFile final : public AudioFile {
public:
    AsfFile(FileBytes& file, const Format& format, std::size_t start)
        : AudioFile(format), file_(file), fields_(read_asf_header(file, start)) {}

    std::vector<TagStore*> tags() override { return {&fields_}; }
    TagStore* add_customary_tag() override { return nullptr; }
    AudioProperties audio() override { return describe_asf(fields_.header()); }
    FileEdit edit() override {
        Rewriting rewriting(file_);
        write_asf_header(fields_.header(), file_, rewriting);
        return rewriting.finish();
    }

private:
    FileBytes& file_;
    AsfFields fields_;
};

} // namespace

std::unique_ptr<AudioFile> open_asf_file(FileBytes& file, const Format& format, std::size_t start) {
    return std::make_unique<AsfFile>(file, format, start);
}

} // namespace vantaro::core::tags
