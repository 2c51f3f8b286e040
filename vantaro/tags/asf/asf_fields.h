// The fields of an ASF (WMA) file.
//
// Choices:
// - Numeric attributes are read as digits, Boolean ones as 1 and 0. A changed attribute keeps its type when
//   the value allows it, otherwise it becomes text. Attributes of bytes are no fields.
// - Number and total of tracks and discs stand together in WM/TrackNumber and WM/PartOfSet.
// - The content description holds the first value of Title, Author, Description and Copyright; further ones
//   are attributes of the same name.
// - Empty values are not kept.
#pragma once

#include "vantaro/tags/tag_store.h"

#include <asftag.h>

#include <memory>

namespace vantaro::core::tags {

class AsfFields final : public TagStore {
public:
    /// Of an empty tag of its own.
    AsfFields() : own_(std::make_shared<TagLib::ASF::Tag>()), tag_(*own_) {}
    /// `tag` outlives this.
    explicit AsfFields(TagLib::ASF::Tag& tag) : tag_(tag) {}

    std::string kind() const override { return "ASF"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    std::string listed_name(const std::string& name) const override;

private:
    Values values_of(const std::string& place) const;
    void put(const std::string& place, const Values& values);

    std::shared_ptr<TagLib::ASF::Tag> own_;
    TagLib::ASF::Tag& tag_;
};

} // namespace vantaro::core::tags
