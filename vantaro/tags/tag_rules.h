// What each kind of tag makes of fields, without a file: the rules that a record read from a file carries.
//
//     info.set_rules(&rules_of(file, fields));
//
// A field is looked at by a tag in memory of the file's kind, so that a preview, a run and a later reading
// agree.
#pragma once

#include "host/api/track_info_record.h"
#include "vantaro/tags/audio_file.h"

#include <vector>

namespace vantaro::core::tags {

/// The rules for a file with these fields, which follows the options that it has; they live as long as the
/// program.
const FieldRules& rules_of(AudioFile& file, const std::vector<TrackField>& fields);

} // namespace vantaro::core::tags
