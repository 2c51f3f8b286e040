// The fields of a Matroska file's Tags element: the texts of its simple tags that say something of the whole
// file or, with a level, of its first audio track. Those of other tracks, chapters and attachments, those in
// another language than "und", binary ones, those within others and levels beside 30, 50 and 60 are no fields
// and stay as they are; what stands within a simple tag stays with its text, and goes with it.
//
// Choices:
// - A tag that tells no level is of level 50, by the rules. Where no tag tells level 30, though, it speaks of
//   the track: that is how most programs mean it, with ALBUM and ALBUM_ARTIST beside TITLE and ARTIST. A new
//   field then follows them. Should an edit take away the last tag that told level 30, the others get their
//   level written down, so that they mean what they meant.
// - Each place of a field that the file has gets the new values. "3/12" in a number is read as number and
//   total; changing either half turns it into two texts.
// - A checksum in front is left out of a changed element. Empty values are not kept.
#pragma once

#include "vantaro/tags/tag_store.h"

#include <cstdint>
#include <optional>

namespace vantaro::core::tags {

class MatroskaFields final : public TagStore {
public:
    MatroskaFields() = default;
    /// `bytes` is the content of the Tags element, `track` the first audio track's UID. Throws
    /// exception_io_data when it is damaged.
    MatroskaFields(std::string_view bytes, std::uint64_t track);

    std::string kind() const override { return "Matroska"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    std::string listed_name(const std::string& name) const override { return field_at(track_level, name); }

    /// Nothing when it is empty: the rules want at least one tag.
    std::string render() const;

private:
    static constexpr unsigned track_level = 30;
    static constexpr unsigned album_level = 50;
    static constexpr unsigned no_level = 0;

    struct Simple {
        std::string name;
        std::optional<std::string> value; ///< nothing: it is no field
        std::string bytes;                ///< as it stands in the file
    };
    struct Tag {
        std::string bytes;   ///< as it stands in the file; empty when it has changed
        std::string targets; ///< the element
        unsigned told = no_level;
        bool counts = true; ///< its texts can be fields
        std::vector<Simple> simples = {};
        std::string head = {}; ///< other elements
    };

    static Tag read_tag(std::string_view body, std::uint64_t track);
    static Simple read_simple(std::string_view whole, std::string_view body);

    bool tells_track() const;
    unsigned level_of(const Tag& tag) const;
    bool has(std::string_view place) const;
    std::string field_at(unsigned level, const std::string& name) const;
    std::string place_of_new(const std::string& field) const;
    void split_pair(const std::string& name);
    void replace(const std::string& field, const Values& values);
    Tag& tag_of_level(unsigned level);
    void tell_levels(bool told_track);

    std::vector<Tag> tags_;
    std::string rest_; ///< other elements
};

} // namespace vantaro::core::tags
