// The title in a segment's information, which players show: the field TITLE where no tag has it. A changed
// title is put there too as long as it fits in its place; otherwise it goes from there, and a tag has it.
#pragma once

#include "vantaro/tags/tag_store.h"

namespace vantaro::core::tags {

class SegmentTitle final : public TagStore {
public:
    /// `info` is the content of the Info element, and outlives this.
    explicit SegmentTitle(std::string_view info);

    bool is_there() const { return room_ > 0; }
    bool has_changed() const { return text_ != old_; }
    /// The content of the Info element, as long as it was.
    std::string render() const;

    std::string kind() const override { return "Segment title"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;

private:
    std::string_view info_;
    std::size_t room_ = 0; ///< of the element
    std::string old_;
    std::string text_;
};

} // namespace vantaro::core::tags
