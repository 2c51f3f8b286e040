// What is to be changed in tags, as a list; and how tags in memory take it on.
//
//     apply_changes(file, normalised(field_changes(before, after), resolve));
#pragma once

#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/tag_file.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace vantaro::core::tags {

/// Gives the name under which the tags list a field.
using ResolveName = std::function<std::string(const std::string&)>;

/// One change a field, of several the last; names resolved, unless another change has the name that one
/// resolves to; number and total apart. A name that resolves to itself keeps its spelling. Throws
/// exception_io naming the field when no tag can hold the name or a value.
std::vector<FieldChange> normalised(std::span<const FieldChange> changes, const ResolveName& resolve);

/// The fields of all tags of the file: one of a tag that another before it has is left out.
std::vector<TrackField> merged_fields(AudioFile& file);

/// Sets a field or, when the tag cannot hold it, leaves the tag without it. Returns the reason.
std::string try_set(TagStore& tag, const std::string& name, const Values& values);

/// Changes the tags in memory; adds the customary one where those present cannot hold the changes.
/// Requires: `changes` are normalised. Throws exception_io naming the field and the reason when no tag holds
/// them; the tags are of no use then.
void apply_changes(AudioFile& file, std::span<const FieldChange> changes);

} // namespace vantaro::core::tags
