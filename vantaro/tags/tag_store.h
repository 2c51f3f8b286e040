// What the tags of all kinds have in common: a tag in memory whose fields can be read and set.
//
//     XiphFields comment(packet);
//     comment.set("ARTIST", {"One", "Two"});
//     packet = comment.render();
#pragma once

#include "host/api/track_info_record.h"
#include "vantaro/tags/tag_options.h"
#include "vantaro/tags/text.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

/// A tag cannot hold a name or a value; what() is the reason. Its field is then absent or as it was before.
class Refused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class TagStore {
public:
    virtual ~TagStore() = default;

    /// For the technical field "tagtype".
    virtual std::string kind() const = 0;
    virtual std::vector<TrackField> fields() const = 0;
    /// Gives the field these values in every place that stands for it; removes it when there are none.
    /// Requires: values are UTF-8 without NUL. Throws Refused.
    virtual void set(const std::string& name, const Values& values) = 0;
    /// What set() minds from now on.
    virtual void follow(const TagOptions&) {}
    /// The same for a tag that is new, whose version is free.
    virtual void begin_with(const TagOptions& options) { follow(options); }
    virtual bool keeps_empty_values() const { return false; }
    /// The name under which fields() lists what is set under `name`.
    virtual std::string listed_name(const std::string& name) const { return upper_name(name); }
    /// Whether the values read back are good enough for those written.
    virtual bool holds(const std::string&, const Values& wanted, const Values& found) const {
        return wanted == found;
    }
};

/// The values of a field in a list, or null.
inline const Values* find_values(const std::vector<TrackField>& fields, std::string_view name) {
    for (const TrackField& field : fields)
        if (equal_field_names(field.name, name))
            return &field.values;
    return nullptr;
}

/// Collects fields that may stand in several places of a tag: the place of the lowest rank counts, values in
/// places of the same rank follow each other.
class RankedFields {
public:
    explicit RankedFields(bool keep_empty = false) : keep_empty_(keep_empty) {}

    void add(const std::string& name, std::size_t rank, const Values& values) {
        for (const std::string& value : values)
            if (keep_empty_ || !value.empty())
                add_value(name, rank, value);
    }
    std::vector<TrackField> take() { return std::move(fields_); }

private:
    void add_value(const std::string& name, std::size_t rank, const std::string& value) {
        for (std::size_t i = 0; i < fields_.size(); ++i)
            if (equal_field_names(fields_[i].name, name)) {
                if (rank < ranks_[i]) {
                    fields_[i].values.clear();
                    ranks_[i] = rank;
                }
                if (rank == ranks_[i])
                    fields_[i].values.push_back(value);
                return;
            }
        fields_.push_back({name, {value}});
        ranks_.push_back(rank);
    }

    bool keep_empty_;
    std::vector<TrackField> fields_;
    std::vector<std::size_t> ranks_;
};

} // namespace vantaro::core::tags
