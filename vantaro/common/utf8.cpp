#include "vantaro/common/utf8.h"

#include <unicode/utf8.h>

#include <algorithm>

namespace vantaro::core {

std::optional<std::int32_t> next_code_point(std::string_view text, std::size_t& at) {
    // ICU counts in 32 bits; no sequence needs more than four bytes.
    const char* bytes = text.data() + at;
    const auto size = static_cast<std::int32_t>(std::min<std::size_t>(text.size() - at, U8_MAX_LENGTH));
    std::int32_t length = 0;
    UChar32 code_point = 0;
    // The macro's own arithmetic mixes the signs of bytes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
    U8_NEXT(bytes, length, size, code_point);
#pragma GCC diagnostic pop
    if (code_point < 0) {
        ++at;
        return std::nullopt;
    }
    at += static_cast<std::size_t>(length);
    return code_point;
}

bool is_utf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();)
        if (!next_code_point(text, at))
            return false;
    return true;
}

} // namespace vantaro::core
