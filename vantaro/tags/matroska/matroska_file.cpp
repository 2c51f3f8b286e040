// Matroska and WebM: a Tags element, and the segment's title.
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/matroska/ebml.h"
#include "vantaro/tags/matroska/matroska_audio.h"
#include "vantaro/tags/matroska/matroska_fields.h"
#include "vantaro/tags/matroska/segment.h"
#include "vantaro/tags/matroska/segment_title.h"

#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::uint32_t writing_program_id = 0x5741;

class MatroskaFile final : public AudioFile {
public:
    MatroskaFile(FileBytes& file, const Format& format, std::size_t start)
        : AudioFile(format), file_(file), segment_(file, start) {
        if (const SegmentPart* info = segment_.find(info_id)) {
            info_ = segment_.body(*info);
            title_.emplace(info_);
        }
        if (const SegmentPart* tracks = segment_.find(tracks_id))
            track_ = first_audio_track(segment_.body(*tracks));
        if (const SegmentPart* tags = segment_.find(tags_id))
            fields_.emplace(segment_.body(*tags), track_.uid);
    }

    std::vector<TagStore*> tags() override {
        std::vector<TagStore*> result;
        if (fields_)
            result.push_back(&*fields_);
        if (title_ && title_->is_there())
            result.push_back(&*title_);
        return result;
    }
    TagStore* add_customary_tag() override { return fields_ ? nullptr : &fields_.emplace(); }

    FileEdit edit() override {
        Rewriting rewriting(file_);
        if (title_ && title_->has_changed())
            rewriting.replace(segment_.find(info_id)->body(), info_.size(), title_->render());
        if (fields_)
            segment_.write_tags(rewriting, fields_->render());
        return rewriting.finish();
    }

    AudioProperties audio() override { return describe_matroska(track_, info_, file_.size()); }
    std::string tool() const override { return clean_text(find_child(info_, writing_program_id)); }

private:
    FileBytes& file_;
    Segment segment_;
    std::string_view info_; ///< the content of the element
    MatroskaTrack track_;
    std::optional<SegmentTitle> title_;
    std::optional<MatroskaFields> fields_;
};

} // namespace

std::unique_ptr<AudioFile> open_matroska_file(FileBytes& file, const Format& format, std::size_t start) {
    return std::make_unique<MatroskaFile>(file, format, start);
}

} // namespace vantaro::core::tags
