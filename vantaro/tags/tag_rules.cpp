#include "vantaro/tags/tag_rules.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/field_changes.h"
#include "vantaro/tags/number_pair.h"
#include "vantaro/tags/tag_kinds.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <tuple>

namespace vantaro::core::tags {

namespace {

const TagKind& customary_kind(const Format& format) {
    return *find_kind(format.customary_tag);
}

/// That of the customary tag where there is none yet.
const TagKind& new_kind(const Format& format, const TagOptions& options) {
    const std::unique_ptr<TagStore> tag = customary_kind(format).make();
    tag->begin_with(options);
    return *find_kind(tag->kind());
}

const FieldPlace* row_of_name(const TagKind& kind, std::string_view name) {
    for (const FieldPlace& row : kind.table)
        if (row.place.starts_with(kind.prefix) && same_text(row.place.substr(kind.prefix.size()), name))
            return &row;
    return nullptr;
}

/// Tags in memory that belong to no file.
class MemoryFile final : public AudioFile {
public:
    MemoryFile(const Format& format, const std::vector<const TagKind*>& kinds_of_tags,
               const TagOptions& options)
        : AudioFile(format) {
        for (const TagKind* kind : kinds_of_tags)
            add(*kind);
        follow(options);
    }

    std::vector<TagStore*> tags() override {
        std::vector<TagStore*> result;
        for (const auto& [kind, tag] : tags_)
            result.push_back(tag.get());
        return result;
    }
    TagStore* add_customary_tag() override {
        const TagKind& customary = customary_kind(format());
        const bool is_there = std::ranges::any_of(
            tags_, [&](const Tag& tag) { return tag.kind->table.data() == customary.table.data(); });
        return is_there ? nullptr : add(customary);
    }
    FileEdit edit() override { return {}; }
    AudioProperties audio() override { return {}; }

private:
    struct Tag {
        const TagKind* kind;
        std::unique_ptr<TagStore> store;
    };

    TagStore* add(const TagKind& kind) {
        // The customary tag of FLAC, and of those with ID3v2, comes first.
        const bool is_first = &kind == &customary_kind(format());
        return tags_.insert(is_first ? tags_.begin() : tags_.end(), Tag{&kind, kind.make()})->store.get();
    }

    std::vector<Tag> tags_;
};

using Kinds = std::vector<const TagKind*>;
using Names = std::vector<std::string_view>;
/// The one object of these rules; it lives as long as the program.
const FieldRules& rules_for(const Format& format, const Kinds& kinds_of_tags, Names alone,
                            const TagOptions& options);

class TagRules final : public FieldRules {
public:
    /// `kinds_of_tags`: of the tags that the file has, those that decide first; not empty. `alone`: the
    /// fields that stand in it under names only that stand for them only_alone.
    TagRules(const Format& format, Kinds kinds_of_tags, Names alone, TagOptions options)
        : format_(format), kinds_(std::move(kinds_of_tags)), alone_(std::move(alone)),
          options_(std::move(options)) {}

    const char* resolve(const TrackInfo& info, const char* name) const override {
        const FieldPlace* row = row_of_name(*kinds_.front(), name);
        if (row == nullptr
            || (row->only_alone && std::ranges::find(alone_, row->field) == alone_.end()
                && info.find_field(row->field.data()) != no_field))
            return name;
        return same_text(row->field, name) ? name : row->field.data();
    }

    const FieldRules* when_made_as(const char* name) const override {
        const FieldPlace* row = row_of_name(*kinds_.front(), name);
        if (row == nullptr || !row->only_alone || std::ranges::find(alone_, row->field) != alone_.end())
            return this;
        Names alone = alone_;
        alone.push_back(row->field);
        return &rules_for(format_, kinds_, std::move(alone), options_);
    }

    void settle(const TrackInfo& before, TrackInfo& after) const override {
        const TrackInfoRecord old(before);
        const TrackInfoRecord edited(after);
        const std::vector<FieldChange> differences = field_changes(old.fields(), edited.fields());
        if (differences.empty())
            return;
        std::vector<FieldChange> changes = normalised(
            differences, [](const std::string& name) { return name; }); // the record has resolved them
        own_names_first(changes);
        std::vector<TrackField> touched = with_what_stands_beside(changes, old.fields());
        MemoryFile file(format_, kinds_, options_);
        for (TagStore* tag : file.tags())
            for (const TrackField& field : touched)
                try_set(*tag, field.name, field.values);
        apply_changes(file, changes);
        for (const FieldChange& change : changes)
            touched.push_back({change.name, {}});
        put(after, merged_fields(file), touched);
    }

private:
    std::string_view field_of(std::string_view name) const {
        const FieldPlace* row = row_of_name(*kinds_.front(), name);
        return row == nullptr ? name : row->field;
    }

    /// The fields of `old` that are stored together with one that changes, or under another name of one;
    /// those first that have their own names.
    std::vector<TrackField> with_what_stands_beside(const std::vector<FieldChange>& changes,
                                                    const std::vector<TrackField>& old) const {
        std::vector<TrackField> result;
        for (const TrackField& field : old) {
            const PairNames* pair = find_pair(upper_name(field.name));
            const bool is_beside = std::ranges::any_of(changes, [&](const FieldChange& change) {
                return same_text(field_of(change.name), field_of(field.name))
                       || (pair != nullptr && pair == find_pair(upper_name(change.name)));
            });
            if (is_beside)
                result.push_back(field);
        }
        own_names_first(result);
        return result;
    }

    /// Other names are fields of their own only beside them.
    template <class Named>
    void own_names_first(std::vector<Named>& fields) const {
        std::stable_partition(fields.begin(), fields.end(), [&](const Named& field) {
            return same_text(field_of(field.name), field.name);
        });
    }

    /// Gives `info`, of the fields in `touched`, those that are in `fields`.
    static void put(TrackInfo& info, const std::vector<TrackField>& fields,
                    const std::vector<TrackField>& touched) {
        for (const TrackField& field : touched)
            if (find_values(fields, field.name) == nullptr)
                if (const std::size_t index = info.find_field(field.name.c_str()); index != no_field)
                    info.remove_fields(MaskOne(index));
        for (const TrackField& field : fields)
            for (std::size_t i = 0; i < field.values.size(); ++i)
                i == 0 ? info.set_field(field.name.c_str(), field.values[i].c_str())
                       : info.add_value(field.name.c_str(), field.values[i].c_str());
    }

    const Format& format_;
    const Kinds kinds_;
    const Names alone_;
    const TagOptions options_;
};

const FieldRules& rules_for(const Format& format, const Kinds& kinds_of_tags, Names alone,
                            const TagOptions& options) {
    std::ranges::sort(alone);
    static std::mutex mutex; // guards the next
    static std::map<std::tuple<const Format*, Kinds, Names, TagOptions>, std::unique_ptr<TagRules>> made;
    const std::lock_guard lock(mutex);
    std::unique_ptr<TagRules>& rules = made[{&format, kinds_of_tags, alone, options}];
    if (!rules)
        rules = std::make_unique<TagRules>(format, kinds_of_tags, std::move(alone), options);
    return *rules;
}

Names fields_alone(const TagKind& kind, const TagStore& tag, const std::vector<TrackField>& fields) {
    Names result;
    for (const FieldPlace& row : kind.table)
        if (row.only_alone && std::ranges::find(result, row.field) == result.end()
            && find_values(fields, row.field) != nullptr
            && tag.listed_name(std::string(row.place.substr(kind.prefix.size()))) == row.field)
            result.push_back(row.field);
    return result;
}

} // namespace

const FieldRules& rules_of(AudioFile& file, const std::vector<TrackField>& fields) {
    Kinds kinds_of_tags;
    Names alone;
    for (const TagStore* tag : file.tags())
        if (const TagKind* kind = find_kind(tag->kind())) {
            if (kinds_of_tags.empty())
                alone = fields_alone(*kind, *tag, fields);
            kinds_of_tags.push_back(kind);
        }
    if (kinds_of_tags.empty())
        kinds_of_tags.push_back(&new_kind(file.format(), file.options()));

    return rules_for(file.format(), kinds_of_tags, std::move(alone), file.options());
}

} // namespace vantaro::core::tags
