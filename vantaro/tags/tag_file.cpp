#include "vantaro/tags/tag_file.h"

#include "host/api/exceptions.h"
#include "vantaro/common/file_source.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/field_changes.h"
#include "vantaro/tags/tag_rules.h"

namespace vantaro::core {

namespace {

using namespace tags;

// What goes wrong because of an abort is nothing but that.
template <class Work>
void open_and(const Work& work, const ByteSource& source, const AbortFlag* abort, const TagOptions& options) {
    FileBytes file(source, abort);
    try {
        const std::unique_ptr<AudioFile> opened = open_audio_file(file);
        opened->follow(options);
        work(*opened);
    } catch (const std::exception&) {
        file.check_abort();
        throw;
    }
    file.check_abort();
}

std::vector<std::string> kinds_of(const std::vector<TagStore*>& tags) {
    std::vector<std::string> result;
    result.reserve(tags.size());
    for (const TagStore* tag : tags)
        result.push_back(tag->kind());
    return result;
}

/// Only versions of ID3v2 change.
std::optional<TagVersionChange> version_change(const std::vector<std::string>& before,
                                               const std::vector<std::string>& after) {
    for (std::size_t i = 0; i < before.size(); ++i)
        if (before[i] != after[i])
            return TagVersionChange{before[i], after[i]};
    return std::nullopt;
}

} // namespace

void read_tags(const std::string& path, TrackInfoRecord& info, const AbortFlag* abort,
               const TagOptions& options) {
    read_tags(FileSource::open(path), info, abort, options);
}

void read_tags(const ByteSource& source, TrackInfoRecord& info, const AbortFlag* abort,
               const TagOptions& options) {
    TrackInfoRecord result;
    open_and(
        [&](AudioFile& file) {
            result.set_fields(merged_fields(file));
            result.set_rules(&rules_of(file, result.fields()));
            set_technical_fields(file, result);
        },
        source, abort, options);
    info = std::move(result);
}

WriteResult write_tags(const ByteSource& source, std::span<const FieldChange> changes, const AbortFlag* abort,
                       const TagOptions& options) {
    WriteResult result;
    open_and(
        [&](AudioFile& file) {
            file.audio(); // throws when the file is damaged
            const std::vector<TrackField> before = merged_fields(file);
            const std::vector<TagStore*> tags = file.tags();
            const std::vector<std::string> kinds = kinds_of(tags);
            apply_changes(file, normalised(changes, [&](const std::string& name) {
                              return tags.empty() ? name : tags.front()->listed_name(name);
                          }));
            result.fields = merged_fields(file);
            if (!field_changes(before, result.fields).empty())
                result.edit = file.edit();
            if (!result.edit.empty())
                result.tag_version = version_change(kinds, kinds_of(tags));
        },
        source, abort, options);
    return result;
}

bool is_audio_file_name(std::string_view path) {
    return format_of_name(path) != nullptr;
}

} // namespace vantaro::core
