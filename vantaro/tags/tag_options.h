// What the user may choose of how tags are stored: the version of ID3v2.
//
//     TagOptions options{.id3v2 = Id3v2Policy::keep, .separator = "; "};
//     read_tags(path, info, nullptr, options);
//
// What a record was read with has to be what it is written with: its rules show what becomes of several
// values. Any thread.
#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace vantaro::core {

/// Which version of ID3v2 a tag has once it is edited. Only 2.4 has a form for several values.
enum class Id3v2Policy {
    as_needed, ///< its own; 2.3 becomes 2.4 when a changed field has several values; new tags are 2.4
    keep,      ///< its own; in 2.3 several values of a changed field are joined; new tags are 2.4
    v23,       ///< the same, but new tags are 2.3
    v24,       ///< 2.4
};

struct TagOptions {
    Id3v2Policy id3v2 = Id3v2Policy::as_needed;
    /// Stands between joined values; not empty, UTF-8 without NUL.
    std::string separator = "/";

    friend auto operator<=>(const TagOptions&, const TagOptions&) = default;
};

/// Of "as-needed", "keep", "2.3", "2.4"; nothing for other texts.
std::optional<Id3v2Policy> id3v2_policy(std::string_view name);
std::string_view name_of(Id3v2Policy policy);

/// Whether values can be joined by this text.
bool can_separate(std::string_view text);

} // namespace vantaro::core
