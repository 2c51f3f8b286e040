#include "vantaro/tags/matroska/segment_title.h"

#include "vantaro/tags/matroska/ebml.h"

namespace vantaro::core::tags {

namespace {

constexpr std::uint32_t title_id = 0x7BA9;

} // namespace

SegmentTitle::SegmentTitle(std::string_view info) : info_(info) {
    while (const std::optional<EbmlElement> child = take_element(info))
        if (child->id == title_id && room_ == 0) {
            room_ = child->whole.size();
            text_ = old_ = clean_text(child->body);
        }
}

std::vector<TrackField> SegmentTitle::fields() const {
    return text_.empty() ? std::vector<TrackField>() : std::vector<TrackField>{{"TITLE", {text_}}};
}

void SegmentTitle::set(const std::string& name, const Values& values) {
    if (!equal_field_names(name, "TITLE"))
        return;
    text_ = values.empty() ? "" : values.front();
    if (make_element(title_id, text_).size() > room_)
        text_.clear();
}

std::string SegmentTitle::render() const {
    std::string result;
    bool is_done = false;
    std::string_view rest = info_;
    while (const std::optional<EbmlElement> child = take_element(rest)) {
        if (child->id == checksum_id) {
            result += make_void(child->whole.size());
        } else if (child->id == title_id && !is_done) {
            is_done = true;
            std::string title = text_.empty() ? std::string() : make_element(title_id, text_);
            if (title.size() + 1 == room_)
                title = make_element(title_id, text_, ebml_header(title)->size_width + 1);
            result += title + make_void(room_ - title.size());
        } else {
            result += child->whole;
        }
    }
    return result.append(rest);
}

} // namespace vantaro::core::tags
