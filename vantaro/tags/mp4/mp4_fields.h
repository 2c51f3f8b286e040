// The fields of an MP4 file's item list ("ilst"), a list of raw atoms of which only those of a changed field
// are touched: covers, ratings, unknown atoms and atoms that stand there twice stay as they are.
//
// Choices:
// - A field without an atom of its own becomes a freeform atom of com.apple.iTunes under the field's name; an
//   existing one keeps its spelling and its "mean", and atoms of other means count where iTunes' is missing.
// - trkn and disk hold whole numbers from 1 to 65535 and totals, tmpo and its like whole numbers, cpil and
// its
//   like 0 or 1; other values are refused. A leading zero does not survive.
// - The genre number (gnre) is read; a changed genre replaces it by a text.
// - Freeform atoms with anything but text are no fields, and no field takes their name.
#pragma once

#include "vantaro/tags/mp4/mp4_data.h"
#include "vantaro/tags/tag_store.h"

namespace vantaro::core::tags {

class Mp4Fields final : public TagStore {
public:
    Mp4Fields() = default;
    /// `list` is one of the atoms; their file outlives this.
    Mp4Fields(const Mp4Atoms& atoms, const Mp4Atom& list);

    std::string kind() const override { return "MP4"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    bool keeps_empty_values() const override { return true; }
    std::string listed_name(const std::string& name) const override;
    bool holds(const std::string& name, const Values& wanted, const Values& found) const override;

    /// The content of the list.
    std::vector<Part> render() const;

private:
    /// What an atom is found by: the name of the table, and for freeform atoms theirs.
    struct Key {
        std::string atom;
        FreeformName freeform = {};

        friend bool operator==(const Key&, const Key&) = default;
    };
    struct Item {
        Key key;
        std::size_t header;
        Part whole;

        std::string_view body() const { return whole.bytes().substr(header); }
    };

    std::string field_of(const Key& key) const;
    void replace(const Key& key, const std::string& body);
    void put(const Key& key, const Values& values);
    void set_pair(const std::string& name, const Values& values);

    std::vector<Item> items_;
    Part rest_;
};

} // namespace vantaro::core::tags
