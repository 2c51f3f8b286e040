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
void open_and(const Work& work, const ByteSource& source, const AbortFlag* abort) {
    FileBytes file(source, abort);
    try {
        work(*open_audio_file(file));
    } catch (const std::exception&) {
        file.check_abort();
        throw;
    }
    file.check_abort();
}

} // namespace

void read_tags(const std::string& path, TrackInfoRecord& info, const AbortFlag* abort) {
    read_tags(FileSource::open(path), info, abort);
}

void read_tags(const ByteSource& source, TrackInfoRecord& info, const AbortFlag* abort) {
    TrackInfoRecord result;
    open_and(
        [&](AudioFile& file) {
            result.set_fields(merged_fields(file));
            result.set_rules(&rules_of(file, result.fields()));
            set_technical_fields(file, result);
        },
        source, abort);
    info = std::move(result);
}

WriteResult write_tags(const ByteSource& source, std::span<const FieldChange> changes,
                       const AbortFlag* abort) {
    WriteResult result;
    open_and(
        [&](AudioFile& file) {
            file.audio(); // throws when the file is damaged
            const std::vector<TrackField> before = merged_fields(file);
            const std::vector<TagStore*> tags = file.tags();
            apply_changes(file, normalised(changes, [&](const std::string& name) {
                              return tags.empty() ? name : tags.front()->listed_name(name);
                          }));
            result.fields = merged_fields(file);
            if (!field_changes(before, result.fields).empty())
                result.edit = file.edit();
        },
        source, abort);
    return result;
}

bool is_audio_file_name(std::string_view path) {
    return format_of_name(path) != nullptr;
}

} // namespace vantaro::core
