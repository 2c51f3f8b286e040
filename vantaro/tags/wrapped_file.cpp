// Formats that have no tags of their own, only those around the audio.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/outer_tags.h"

namespace vantaro::core::tags {

namespace {

class WrappedFile final : public AudioFile {
public:
    WrappedFile(FileBytes& file, const Format& format, std::size_t start)
        : AudioFile(format), file_(file), outer_(file, start) {
        // Nothing else would tell that the name is wrong.
        if (format.describe == nullptr && !begins_as(file, format, start))
            throw vantaro_io::exception_io_data("The file does not begin as " + std::string(format.name)
                                                + " files do");
    }

    std::vector<TagStore*> tags() override { return outer_.tags(format().customary_tag); }
    TagStore* add_customary_tag() override { return outer_.add(format().customary_tag); }
    FileEdit edit() override {
        Rewriting rewriting(file_);
        outer_.write(rewriting);
        return rewriting.finish();
    }
    AudioProperties audio() override {
        return format().describe == nullptr ? AudioProperties{} : format().describe(file_, outer_.audio());
    }

private:
    FileBytes& file_;
    OuterTags outer_;
};

} // namespace

std::unique_ptr<AudioFile> open_wrapped_file(FileBytes& file, const Format& format, std::size_t start) {
    return std::make_unique<WrappedFile>(file, format, start);
}

} // namespace vantaro::core::tags
