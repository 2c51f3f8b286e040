// The fields of an ASF (WMA) file.
//
// Choices:
// - Numeric attributes are read as digits, Boolean ones as 1 and 0. A changed attribute keeps its type when
//   the value allows it, otherwise it becomes text. Attributes of bytes are no fields; those that have a
//   field's name stay beside it.
// - Number and total of tracks and discs stand together in WM/TrackNumber and WM/PartOfSet.
// - The content description holds the first value of Title, Author, Description and Copyright; further ones
//   are attributes of the same name.
// - An attribute's first value stands in the extended content description when it is short and for the whole
//   file, further ones in the metadata library. They keep the old ones' languages and streams.
// - Empty values are not kept.
#pragma once

#include "vantaro/tags/asf/asf_header.h"
#include "vantaro/tags/tag_store.h"

namespace vantaro::core::tags {

class AsfFields final : public TagStore {
public:
    explicit AsfFields(AsfHeader header = {}) : header_(std::move(header)) {}

    std::string kind() const override { return "ASF"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    std::string listed_name(const std::string& name) const override;

    /// As edited.
    const AsfHeader& header() const { return header_; }

private:
    Values values_of(const std::string& place) const;
    void put(const std::string& place, const Values& values);
    std::vector<AsfAttribute> take_texts(const std::string& place);
    void add(AsfAttribute attribute, const std::string& value, bool is_first);
    AsfObject& edited(AsfKind kind);

    AsfHeader header_;
};

} // namespace vantaro::core::tags
