#include "vantaro/tags/tag_file.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/field_changes.h"
#include "vantaro/tags/read_stream.h"
#include "vantaro/tags/tag_rules.h"
#include "vantaro/tags/technical.h"
#include "vantaro/tags/watched_stream.h"

#include <algorithm>

namespace vantaro::core {

namespace {

using namespace tags;

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
        result.set_rules(&rules_of(file, result.fields()));
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
        const std::vector<TagStore*> tags = file.tags();
        apply_changes(file, normalised(changes, [&](const std::string& name) {
                          return tags.empty() ? name : tags.front()->listed_name(name);
                      }));
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
