// The kinds of tags that can hold any field, a row each. ID3v1 and INFO, which cannot, stand beside others.
#pragma once

#include "vantaro/tags/field_places.h"
#include "vantaro/tags/tag_store.h"

#include <memory>
#include <span>
#include <string_view>

namespace vantaro::core::tags {

inline constexpr std::string_view vorbis_comment = "Vorbis comment";
inline constexpr std::string_view id3v24 = "ID3v2.4";
inline constexpr std::string_view id3v23 = "ID3v2.3";
inline constexpr std::string_view ape_tag = "APEv2";
inline constexpr std::string_view mp4_tag = "MP4";
inline constexpr std::string_view asf_tag = "ASF";
inline constexpr std::string_view caf_tag = "CAF";
inline constexpr std::string_view matroska_tag = "Matroska";

struct TagKind {
    std::string_view name; ///< as TagStore::kind gives it
    std::span<const FieldPlace> table;
    std::string_view prefix;             ///< of places whose rest is a name that anybody may give
    std::unique_ptr<TagStore> (*make)(); ///< an empty tag
};

/// Null when no kind has that name.
const TagKind* find_kind(std::string_view name);

} // namespace vantaro::core::tags
