#include "vantaro/tags/tag_file.h"

#include "host/api/exceptions.h"
#include "vantaro/common/utf8.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/number_pair.h"
#include "vantaro/tags/read_stream.h"
#include "vantaro/tags/technical.h"
#include "vantaro/tags/watched_stream.h"

#include <algorithm>

namespace vantaro::core {

namespace {

using namespace tags;

// A field of one tag that a tag before it has is left out.
std::vector<TrackField> merged_fields(AudioFile& file) {
    std::vector<TrackField> fields;
    for (const TagStore* tag : file.tags())
        for (TrackField& field : tag->fields())
            if (find_values(fields, field.name) == nullptr)
                fields.push_back(std::move(field));
    return fields;
}

bool same_name(const FieldChange& change, std::string_view name) {
    return equal_field_names(change.name, name);
}

// One change a field, number and total apart.
std::vector<FieldChange> normalised(std::span<const FieldChange> changes) {
    std::vector<FieldChange> result;
    for (const FieldChange& change : changes) {
        for (const std::string& value : change.values) {
            if (value.find('\0') != std::string::npos)
                throw vantaro_io::exception_io(change.name + ": a value cannot contain a NUL character");
            if (!is_utf8(value))
                throw vantaro_io::exception_io(change.name + ": a value is no valid UTF-8");
        }
        if (change.name.empty() || !is_utf8(change.name) || change.name.find('\0') != std::string::npos)
            throw vantaro_io::exception_io(change.name + ": this cannot be the name of a field");
        std::erase_if(result, [&](const FieldChange& other) { return same_name(other, change.name); });
        result.push_back(change);
    }
    for (const PairNames& names : pair_names) {
        const auto number = std::ranges::find_if(
            result, [&](const FieldChange& change) { return same_name(change, names.number); });
        const bool has_total = std::ranges::any_of(
            result, [&](const FieldChange& change) { return same_name(change, names.total); });
        if (number == result.end() || has_total || number->values.size() != 1)
            continue;
        const NumberPair pair = split_pairs(number->values);
        if (pair.numbers.empty() || pair.totals.empty())
            continue;
        number->values = pair.numbers;
        result.push_back({std::string(names.total), pair.totals});
    }
    return result;
}

Values values_for(const TagStore& tag, const FieldChange& change) {
    Values values = change.values;
    if (!tag.keeps_empty_values())
        std::erase(values, std::string());
    return values;
}

// Sets a field or, when the tag cannot hold it, leaves the tag without it. Returns the reason.
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

void apply(TagStore& tag, const std::vector<FieldChange>& changes, std::string& refusal) {
    for (const FieldChange& change : changes) {
        const std::string reason = try_set(tag, change.name, values_for(tag, change));
        if (refusal.empty())
            refusal = reason;
    }
}

// The first change that reading the file would not show as it is meant, or null.
const FieldChange* find_unmet(AudioFile& file, const std::vector<FieldChange>& changes) {
    const std::vector<TrackField> fields = merged_fields(file);
    const std::vector<TagStore*> tags = file.tags();
    for (const FieldChange& change : changes) {
        if (tags.empty()) {
            if (!change.values.empty())
                return &change;
            continue;
        }
        const TagStore& tag = *tags.front();
        const Values wanted = values_for(tag, change);
        const Values* found = find_values(fields, tag.listed_name(change.name));
        if (!tag.holds(upper_name(change.name), wanted, found == nullptr ? Values() : *found))
            return &change;
    }
    return nullptr;
}

// Changes the tags in memory. Throws when they cannot hold the change.
void apply_changes(AudioFile& file, const std::vector<FieldChange>& changes) {
    std::string refusal;
    for (TagStore* tag : file.tags())
        apply(*tag, changes, refusal);
    const FieldChange* unmet = find_unmet(file, changes);
    if (unmet == nullptr)
        return;
    const std::vector<TrackField> present = merged_fields(file);
    if (TagStore* tag = file.add_customary_tag()) {
        refusal.clear();
        for (const TrackField& field : present)
            if (std::ranges::none_of(
                    changes, [&](const FieldChange& change) { return same_name(change, field.name); }))
                try_set(*tag, field.name, field.values);
        apply(*tag, changes, refusal);
        unmet = find_unmet(file, changes);
        if (unmet == nullptr)
            return;
    }
    if (refusal.empty())
        refusal =
            unmet->name + ": " + std::string(format_name(file.format())) + " files cannot hold this value";
    throw vantaro_io::exception_io(refusal);
}

// Opens a file and does `work` with it. What goes wrong because of an abort is nothing but that.
template <class Work>
void read_whole(WatchedStream& stream, const Work& work) {
    try {
        work(*open_audio_file(stream));
    } catch (const std::exception&) {
        stream.check_abort();
        throw;
    }
    stream.check_abort();
}

} // namespace

std::vector<FieldChange> field_changes(const std::vector<TrackField>& before,
                                       const std::vector<TrackField>& after) {
    std::vector<FieldChange> changes;
    for (const TrackField& field : after) {
        const Values* old = find_values(before, field.name);
        if (old == nullptr ? !field.values.empty() : *old != field.values)
            changes.push_back({field.name, field.values});
    }
    for (const TrackField& field : before)
        if (!field.values.empty() && find_values(after, field.name) == nullptr)
            changes.push_back({field.name, {}});
    return changes;
}

void read_tags(const std::string& path, TrackInfoRecord& info, const AbortFlag* abort) {
    ReadStream stream = ReadStream::open(path);
    TrackInfoRecord result;
    try {
        read_tags(stream, result, abort);
    } catch (const vantaro_io::exception_io_data&) {
        stream.check(); // says better what is wrong
        throw;
    }
    stream.check();
    info = std::move(result);
}

void read_tags(TagLib::IOStream& stream, TrackInfoRecord& info, const AbortFlag* abort) {
    WatchedStream watched(stream, abort);
    TrackInfoRecord result;
    read_whole(watched, [&](AudioFile& file) {
        result.set_fields(merged_fields(file));
        read_technical(watched, file, result);
        result.set_replay_gain(find_replay_gain(result.fields(), file.format()));
    });
    info = std::move(result);
}

WriteResult write_tags(TagLib::IOStream& stream, std::span<const FieldChange> changes,
                       const AbortFlag* abort) {
    if (stream.readOnly())
        throw vantaro_io::exception_io_denied();
    WatchedStream watched(stream, abort);
    WriteResult result;
    read_whole(watched, [&](AudioFile& file) {
        TrackInfoRecord audio;
        read_technical(watched, file, audio); // throws when the file is damaged
        watched.check_abort();
        const std::vector<TrackField> before = merged_fields(file);
        apply_changes(file, normalised(changes));
        result.fields = merged_fields(file);
        result.is_written = !field_changes(before, result.fields).empty();
        watched.allow_searches();
        if (result.is_written)
            file.save();
    });
    return result;
}

bool is_audio_file_name(std::string_view path) {
    return format_of_name(path).has_value();
}

} // namespace vantaro::core
