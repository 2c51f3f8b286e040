#include "vantaro/tags/tag_kinds.h"

#include "vantaro/tags/ape/ape_fields.h"
#include "vantaro/tags/ape/ape_places.h"
#include "vantaro/tags/asf/asf_fields.h"
#include "vantaro/tags/asf/asf_places.h"
#include "vantaro/tags/caf/caf_fields.h"
#include "vantaro/tags/caf/caf_places.h"
#include "vantaro/tags/id3v2/id3v2_fields.h"
#include "vantaro/tags/id3v2/id3v2_places.h"
#include "vantaro/tags/matroska/matroska_fields.h"
#include "vantaro/tags/matroska/matroska_places.h"
#include "vantaro/tags/mp4/mp4_fields.h"
#include "vantaro/tags/mp4/mp4_places.h"
#include "vantaro/tags/xiph/xiph_fields.h"
#include "vantaro/tags/xiph/xiph_places.h"

#include <algorithm>
#include <array>

namespace vantaro::core::tags {

namespace {

template <class Store>
std::unique_ptr<TagStore> make() {
    return std::make_unique<Store>();
}

std::unique_ptr<TagStore> make_id3v23() {
    return std::make_unique<Id3v2Fields>(3);
}

constexpr auto kinds = std::to_array<TagKind>({
    {vorbis_comment, xiph_places, "", make<XiphFields>},
    {id3v24, id3v2_places, "TXXX:", make<Id3v2Fields>},
    {id3v23, id3v2_places, "TXXX:", make_id3v23},
    {ape_tag, ape_places, "", make<ApeFields>},
    {mp4_tag, mp4_places, "--:", make<Mp4Fields>},
    {asf_tag, asf_places, "", make<AsfFields>},
    {caf_tag, caf_places, "", make<CafFields>},
    {matroska_tag, matroska_places, "30:", make<MatroskaFields>},
});

} // namespace

const TagKind* find_kind(std::string_view name) {
    const auto found = std::ranges::find(kinds, name, &TagKind::name);
    return found == kinds.end() ? nullptr : &*found;
}

} // namespace vantaro::core::tags
