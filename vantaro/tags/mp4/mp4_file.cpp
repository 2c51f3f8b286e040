// MP4: the item list within moov.udta.meta.
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/mp4/mp4_audio.h"
#include "vantaro/tags/mp4/mp4_fields.h"
#include "vantaro/tags/mp4/mp4_writer.h"

#include <optional>

namespace vantaro::core::tags {

namespace {

class Mp4File final : public AudioFile {
public:
    Mp4File(FileBytes& file, const Format& format) : AudioFile(format), atoms_(file) {
        if (const Mp4Atom* list = atoms_.find({"moov", "udta", "meta", "ilst"})) {
            file.note_tag(list->start, list->end - list->start);
            fields_.emplace(atoms_, *list);
        }
    }

    std::vector<TagStore*> tags() override {
        return fields_ ? std::vector<TagStore*>{&*fields_} : std::vector<TagStore*>();
    }
    TagStore* add_customary_tag() override { return fields_ ? nullptr : &fields_.emplace(); }
    AudioProperties audio() override { return describe_mp4(atoms_); }
    FileEdit edit() override {
        return fields_ ? rewrite_mp4_list(atoms_, fields_->render()) : Rewriting(atoms_.file()).finish();
    }

private:
    Mp4Atoms atoms_;
    std::optional<Mp4Fields> fields_;
};

} // namespace

std::unique_ptr<AudioFile> open_mp4_file(FileBytes& file, const Format& format, std::size_t) {
    return std::make_unique<Mp4File>(file, format);
}

} // namespace vantaro::core::tags
