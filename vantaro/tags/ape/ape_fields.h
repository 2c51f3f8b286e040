// The fields of an APE tag: its text items. Binary items and locators are no fields. Items that an edit does
// not name are written back byte for byte, those with keys or values against the rules too: TagLib would drop
// them.
//
// Choices: items keep their key's spelling; each spelling of a field that the tag has gets the new values,
// new fields get the first key of ape_places.h. Number and total stand together in Track, Disc and MOVEMENT;
// a total found in an item of its own stays there and is kept in step. Empty values are not kept.
#pragma once

#include "vantaro/tags/tag_store.h"

#include <cstdint>

namespace vantaro::core::tags {

/// Of the footer, and of the header that may stand in front.
constexpr std::size_t ape_footer_size = 32;

class ApeFields final : public TagStore {
public:
    ApeFields() = default;
    /// `bytes` is the tag, with a header or without, and its footer. Requires: it has a footer.
    explicit ApeFields(std::string_view bytes);

    std::string kind() const override { return "APEv2"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    std::string listed_name(const std::string& name) const override;

    bool empty() const { return items_.empty() && rest_.empty(); }
    /// With header and footer.
    std::string render() const;

private:
    struct Item {
        std::uint32_t flags;
        std::string key;
        std::string value;
    };

    /// The one that counts of those with this key, or null.
    const Item* find(std::string_view key) const;
    Values values_of(std::string_view key) const;
    void put(const std::string& key, const Values& values);
    void set_pair(const std::string& name, const Values& values);
    void set_plain(const std::string& name, const Values& values, const std::string& spelling);

    std::vector<Item> items_;
    std::string rest_;             ///< what is no item
    std::uint32_t rest_count_ = 0; ///< how many items the footer says it is
};

} // namespace vantaro::core::tags
