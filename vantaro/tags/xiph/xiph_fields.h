// The Vorbis comment of FLAC, Ogg Vorbis, Opus, Speex and Ogg FLAC.
//
// Choices:
// - Comments that an edit does not name stay as they are: order, case of the name, names that are not valid,
//   pictures, empty values.
// - Each spelling of a field that the comment has gets the new values; a new field gets the first name of
//   xiph_places.h. Spellings with more than one meaning (YEAR, DESCRIPTION, VERSION, ...) count as the field
//   only where its customary name is missing, and are fields of their own otherwise.
// - "3/12" in TRACKNUMBER is read as number and total; changing either half turns it into two comments.
#pragma once

#include "vantaro/tags/tag_store.h"

namespace vantaro::core::tags {

class XiphFields final : public TagStore {
public:
    XiphFields() = default;
    /// `bytes` starts at the length of the vendor's name. Throws exception_io_data.
    explicit XiphFields(std::string_view bytes);

    std::string kind() const override { return "Vorbis comment"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    bool keeps_empty_values() const override { return true; }
    std::string listed_name(const std::string& name) const override;

    const std::string& vendor() const { return vendor_; }
    /// Takes away the zero bytes behind the comments and `mark`. Returns false, and takes nothing, when
    /// anything else stands there.
    bool remove_padding(std::string_view mark);
    /// With whatever stood behind the comments.
    std::string render() const;

private:
    struct Comment {
        std::string name;
        std::string value;
        bool has_sign = true; ///< a "=" between them
    };

    bool has(std::string_view name) const;
    void split_pair(const std::string& name);
    void replace(const std::string& field, const Values& values);

    std::string vendor_;
    std::vector<Comment> comments_;
    std::string rest_;
};

} // namespace vantaro::core::tags
