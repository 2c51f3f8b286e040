#include "vantaro/tags/field_changes.h"

#include "host/api/exceptions.h"
#include "vantaro/common/utf8.h"
#include "vantaro/tags/number_pair.h"

#include <algorithm>

namespace vantaro::core {

std::vector<FieldChange> field_changes(const std::vector<TrackField>& before,
                                       const std::vector<TrackField>& after) {
    std::vector<FieldChange> changes;
    for (const TrackField& field : after) {
        const tags::Values* old = tags::find_values(before, field.name);
        if (old == nullptr ? !field.values.empty() : *old != field.values)
            changes.push_back({field.name, field.values});
    }
    for (const TrackField& field : before)
        if (!field.values.empty() && tags::find_values(after, field.name) == nullptr)
            changes.push_back({field.name, {}});
    return changes;
}

namespace tags {

namespace {

bool same_name(const FieldChange& change, std::string_view name) {
    return equal_field_names(change.name, name);
}

void check_texts(const FieldChange& change) {
    for (const std::string& value : change.values) {
        if (value.find('\0') != std::string::npos)
            throw vantaro_io::exception_io(change.name + ": a value cannot contain a NUL character");
        if (!is_utf8(value))
            throw vantaro_io::exception_io(change.name + ": a value is no valid UTF-8");
    }
    if (change.name.empty() || !is_utf8(change.name) || change.name.find('\0') != std::string::npos)
        throw vantaro_io::exception_io(change.name + ": this cannot be the name of a field");
}

void part_pairs(std::vector<FieldChange>& changes) {
    for (const PairNames& names : pair_names) {
        const auto number = std::ranges::find_if(
            changes, [&](const FieldChange& change) { return same_name(change, names.number); });
        const bool has_total = std::ranges::any_of(
            changes, [&](const FieldChange& change) { return same_name(change, names.total); });
        if (number == changes.end() || has_total || number->values.size() != 1)
            continue;
        const NumberPair pair = split_pairs(number->values);
        if (pair.numbers.empty() || pair.totals.empty())
            continue;
        number->values = pair.numbers;
        changes.push_back({std::string(names.total), pair.totals});
    }
}

Values values_for(const TagStore& tag, const FieldChange& change) {
    Values values = change.values;
    if (!tag.keeps_empty_values())
        std::erase(values, std::string());
    return values;
}

void apply(TagStore& tag, std::span<const FieldChange> changes, std::string& refusal) {
    for (const FieldChange& change : changes) {
        const std::string reason = try_set(tag, change.name, values_for(tag, change));
        if (refusal.empty())
            refusal = reason;
    }
}

// The first change that reading the file would not show as it is meant, or null.
const FieldChange* find_unmet(AudioFile& file, std::span<const FieldChange> changes) {
    const std::vector<TrackField> fields = merged_fields(file);
    const std::vector<TagStore*> tags = file.tags();
    for (const FieldChange& change : changes) {
        if (tags.empty()) {
            if (!change.values.empty())
                return &change;
            continue;
        }
        const TagStore& tag = *tags.front();
        const Values* found = find_values(fields, change.name);
        if (!tag.holds(upper_name(change.name), values_for(tag, change),
                       found == nullptr ? Values() : *found))
            return &change;
    }
    return nullptr;
}

} // namespace

std::vector<FieldChange> normalised(std::span<const FieldChange> changes, const ResolveName& resolve) {
    const auto is_named = [&](std::string_view name) {
        return std::ranges::any_of(changes,
                                   [&](const FieldChange& change) { return same_name(change, name); });
    };
    std::vector<FieldChange> result;
    for (FieldChange change : changes) {
        check_texts(change);
        if (const std::string name = resolve(change.name); !is_named(name))
            change.name = name;
        std::erase_if(result, [&](const FieldChange& other) { return same_name(other, change.name); });
        result.push_back(std::move(change));
    }
    // What is called otherwise is a field of its own only beside the customary name.
    std::stable_partition(result.begin(), result.end(),
                          [&](const FieldChange& change) { return same_name(change, resolve(change.name)); });
    part_pairs(result);
    return result;
}

std::vector<TrackField> merged_fields(AudioFile& file) {
    std::vector<TrackField> fields;
    for (const TagStore* tag : file.tags())
        for (TrackField& field : tag->fields())
            if (find_values(fields, field.name) == nullptr)
                fields.push_back(std::move(field));
    return fields;
}

std::string try_set(TagStore& tag, const std::string& name, const Values& values) {
    try {
        tag.set(name, values);
        return {};
    } catch (const Refused& reason) {
        if (!values.empty())
            try_set(tag, name, {});
        return name + ": " + reason.what();
    }
}

void apply_changes(AudioFile& file, std::span<const FieldChange> changes) {
    std::string refusal;
    for (TagStore* tag : file.tags())
        apply(*tag, changes, refusal);
    const FieldChange* unmet = find_unmet(file, changes);
    if (unmet == nullptr)
        return;
    const std::vector<TrackField> present = merged_fields(file);
    if (TagStore* tag = file.add_customary_tag()) {
        tag->begin_with(file.options());
        refusal.clear();
        for (const TrackField& field : present)
            if (std::ranges::none_of(changes, [&](const FieldChange& change) {
                    return equal_field_names(change.name, field.name);
                }))
                try_set(*tag, field.name, field.values);
        apply(*tag, changes, refusal);
        unmet = find_unmet(file, changes);
        if (unmet == nullptr)
            return;
    }
    if (refusal.empty())
        refusal = unmet->name + ": " + std::string(file.format().name) + " files cannot hold this value";
    throw vantaro_io::exception_io(refusal);
}

} // namespace tags

} // namespace vantaro::core
