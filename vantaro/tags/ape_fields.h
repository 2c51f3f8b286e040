// The fields of an APE tag: its text items. Binary items and locators are no fields.
//
// Choices: items keep their key's spelling; each spelling of a field that the tag has gets the new values,
// new fields get the first key of ape_places.h. Number and total stand together in Track, Disc and MOVEMENT;
// a total found in an item of its own stays there and is kept in step. Empty values are not kept.
#pragma once

#include "vantaro/tags/tag_store.h"

#include <apetag.h>

#include <memory>

namespace vantaro::core::tags {

class ApeFields final : public TagStore {
public:
    ApeFields() : tag_(std::make_unique<TagLib::APE::Tag>()) {}
    /// Requires: a tag that TagLib has read. It is edited in place.
    explicit ApeFields(std::unique_ptr<TagLib::APE::Tag> tag) : tag_(std::move(tag)) {}

    std::string kind() const override { return "APEv2"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    std::string listed_name(const std::string& name) const override;

    bool empty() const { return tag_->itemListMap().isEmpty(); }
    std::string render() const { return to_bytes(tag_->render()); }

private:
    Values values_of(const std::string& key) const;
    void put(const std::string& key, const Values& values);
    void set_pair(const std::string& name, const Values& values);
    void set_plain(const std::string& name, const Values& values, const std::string& spelling);

    std::unique_ptr<TagLib::APE::Tag> tag_;
};

} // namespace vantaro::core::tags
