#include "vantaro/tags/padding.h"

namespace vantaro::core::tags {

namespace {

constexpr std::size_t least_padding = 1024;

bool fits(std::size_t needed, std::size_t room, const PaddingForm& form) {
    return needed == room || needed + form.header <= room;
}

} // namespace

std::size_t padded_size(std::size_t needed, std::size_t room, const PaddingForm& form) {
    if (room <= form.limit && fits(needed, room, form))
        return room;
    const std::size_t wanted = needed + form.header + least_padding;
    std::size_t size = room;
    if (wanted > room)
        size += (wanted - room + form.step - 1) / form.step * form.step;
    if (size <= form.limit)
        return size;
    return needed <= form.limit && fits(needed, form.limit, form) ? form.limit : needed;
}

} // namespace vantaro::core::tags
