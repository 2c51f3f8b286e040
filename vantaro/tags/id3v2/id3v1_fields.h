// The fields of an ID3v1 tag, changed in place: other fields keep their bytes.
//
// The tag never decides what a field is when another tag has the field. A changed text is cut to the field's
// size; characters that are no Latin-1 become "?", so that programs which read only this tag show something
// close. A genre that is not on the list, and a track number or year that is no plain number, leave the field
// empty.
#pragma once

#include "vantaro/tags/tag_store.h"

namespace vantaro::core::tags {

inline constexpr std::size_t id3v1_size = 128;

class Id3v1Fields final : public TagStore {
public:
    /// Requires: 128 bytes that start with "TAG".
    explicit Id3v1Fields(std::string_view bytes) : bytes_(bytes) {}

    std::string kind() const override { return "ID3v1"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;

    const std::string& render() const { return bytes_; }

private:
    std::string text(std::size_t position, std::size_t size) const;
    void put(std::size_t position, std::size_t size, const std::string& text);
    bool has_track() const { return bytes_[125] == 0 && bytes_[126] != 0; }

    std::string bytes_;
};

} // namespace vantaro::core::tags
