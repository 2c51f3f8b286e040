#include "vantaro/locations/natural_order.h"

#include "vantaro/common/path_text.h"
#include "vantaro/common/utf8.h"

#include <unicode/coll.h>
#include <unicode/sortkey.h>
#include <unicode/unistr.h>

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>

namespace vantaro::core {

namespace {

std::unique_ptr<const icu::Collator> made_collator(icu::Collator::ECollationStrength strength) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> made(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    if (made) {
        made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        made->setStrength(strength);
    }
    if (U_FAILURE(status) || !made)
        throw std::runtime_error("The rules of the alphabet are missing");
    return made;
}

// What does not change a collator may be called on it by any number of threads.

const icu::Collator& collator() {
    static const std::unique_ptr<const icu::Collator> shared = made_collator(icu::Collator::TERTIARY);
    return *shared;
}

const icu::Collator& collator_without_case() {
    static const std::unique_ptr<const icu::Collator> shared = made_collator(icu::Collator::SECONDARY);
    return *shared;
}

icu::StringPiece piece(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

UCollationResult collated(const icu::Collator& by, std::string_view a, std::string_view b) {
    UErrorCode status = U_ZERO_ERROR;
    return is_utf8(a) && is_utf8(b) ? by.compareUTF8(piece(a), piece(b), status)
                                    : by.compareUTF8(path_as_text(a), path_as_text(b), status);
}

} // namespace

std::strong_ordering compare_natural(std::string_view a, std::string_view b) {
    const UCollationResult result = collated(collator(), a, b);
    if (result != UCOL_EQUAL)
        return result == UCOL_LESS ? std::strong_ordering::less : std::strong_ordering::greater;
    return a <=> b;
}

std::weak_ordering compare_natural_ignoring_case(std::string_view a, std::string_view b) {
    const UCollationResult result = collated(collator_without_case(), a, b);
    return result == UCOL_LESS      ? std::weak_ordering::less
           : result == UCOL_GREATER ? std::weak_ordering::greater
                                    : std::weak_ordering::equivalent;
}

std::string natural_sort_key(std::string_view text) {
    const icu::UnicodeString characters = is_utf8(text) ? icu::UnicodeString::fromUTF8(piece(text))
                                                        : icu::UnicodeString::fromUTF8(path_as_text(text));
    std::array<std::uint8_t, 512> bytes;
    const auto room = static_cast<std::int32_t>(bytes.size());
    const std::int32_t size = collator().getSortKey(characters, bytes.data(), room);
    std::string key;
    if (size <= room) {
        key.assign(bytes.begin(), bytes.begin() + size);
    } else {
        std::vector<std::uint8_t> more(static_cast<std::size_t>(size));
        collator().getSortKey(characters, more.data(), size);
        key.assign(more.begin(), more.end());
    }
    // Keys end in their only NUL, so that what follows decides where they are equal.
    return key.append(text);
}

} // namespace vantaro::core
