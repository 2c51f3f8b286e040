#include "host/shared/text.h"

#include "host/api/exceptions.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/coll.h>
#include <unicode/localpointer.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstring>

namespace quorvex {

namespace {

constexpr std::string_view cut_mark = " (...)";

char32_t take_lower(std::string_view& text) {
    const auto byte = static_cast<unsigned char>(text.front());
    if (byte >= 0x80)
        return uCharLower(take_character(text));
    text.remove_prefix(1); // most texts are ASCII
    return byte >= 'A' && byte <= 'Z' ? static_cast<char32_t>(byte + ('a' - 'A')) : byte;
}

int compare(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        const char32_t x = take_lower(a);
        const char32_t y = take_lower(b);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return (a.empty() ? 0 : 1) - (b.empty() ? 0 : 1);
}

using MapCase = void(const char*, uint32_t, icu::StringPiece, icu::ByteSink&, icu::Edits*, UErrorCode&);

void add_mapped(std::string& out, std::string_view text, MapCase* map) {
    UErrorCode status = U_ZERO_ERROR;
    icu::StringByteSink<std::string> sink(&out);
    map("", 0, icu::StringPiece(text.data(), static_cast<int32_t>(text.size())), sink, nullptr, status);
}

} // namespace

char32_t take_character(std::string_view& text) {
    const auto length = static_cast<int32_t>(std::min<std::size_t>(text.size(), U8_MAX_LENGTH));
    int32_t used = 0;
    UChar32 c = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
    U8_NEXT(text.data(), used, length, c);
#pragma GCC diagnostic pop
    if (c < 0) {
        c = static_cast<UChar32>(invalid_byte_base) + static_cast<unsigned char>(text.front());
        used = 1;
    }
    text.remove_prefix(static_cast<std::size_t>(used));
    return static_cast<char32_t>(c);
}

char32_t uCharLower(char32_t code_point) {
    return code_point < 0x10000 ? static_cast<char32_t>(u_tolower(static_cast<UChar32>(code_point)))
                                : code_point;
}

int stricmp_utf8(const char* a, const char* b) {
    return compare(a, b);
}

int stricmp_utf8_ex(const char* a, std::size_t a_length, const char* b, std::size_t b_length) {
    return compare({a, a_length}, {b, b_length});
}

int compare_alphabetical(std::string_view a, std::string_view b) {
    static const icu::LocalPointer<const icu::Collator> collator([] {
        UErrorCode status = U_ZERO_ERROR;
        icu::LocalPointer<icu::Collator> made(icu::Collator::createInstance(icu::Locale::getRoot(), status));
        if (made.isValid())
            made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        return U_SUCCESS(status) ? made.orphan() : nullptr;
    }());
    UErrorCode status = U_ZERO_ERROR;
    const auto piece = [](std::string_view text) {
        return icu::StringPiece(text.data(), static_cast<int32_t>(text.size()));
    };
    const UCollationResult result =
        collator.isValid() ? collator->compareUTF8(piece(a), piece(b), status) : UCOL_EQUAL;
    return result != UCOL_EQUAL ? static_cast<int>(result) : a.compare(b);
}

int stricmp_utf8_partial(const char* text, const char* prefix) {
    std::string_view rest = text;
    std::string_view wanted = prefix;
    while (!wanted.empty()) {
        if (rest.empty())
            return -1;
        const char32_t x = take_lower(rest);
        const char32_t y = take_lower(wanted);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return 0;
}

void uAddStringUpper(std::string& out, std::string_view text) {
    add_mapped(out, text, &icu::CaseMap::utf8ToUpper);
}

void uAddStringLower(std::string& out, std::string_view text) {
    add_mapped(out, text, &icu::CaseMap::utf8ToLower);
}

void uReplaceCharAdd(std::string& out, std::string_view text, char from, char to) {
    std::replace_copy(text.begin(), text.end(), std::back_inserter(out), from, to);
}

bool is_utf8(std::string_view text) {
    while (!text.empty())
        if (take_character(text) >= invalid_byte_base)
            return false;
    return true;
}

std::string to_utf8(std::string_view bytes, const char* character_set) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUConverterPointer converter(ucnv_open(character_set, &status));
    if (U_FAILURE(status))
        throw vantaro_io::exception_io(std::string("Unknown character set ") + character_set);
    const icu::UnicodeString text(bytes.data(), static_cast<int32_t>(bytes.size()), converter.getAlias(),
                                  status);
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

std::string limit_text(std::string_view text, std::size_t count) {
    std::string_view rest = text;
    for (std::size_t passed = 0; passed < count; ++passed) {
        if (rest.empty())
            return std::string(text);
        take_character(rest);
    }
    return std::string(text.substr(0, text.size() - rest.size())).append(cut_mark);
}

std::string first_line(std::string text) {
    const std::size_t end = text.find_first_of("\r\n");
    if (end != std::string::npos) {
        text.resize(end);
        text += cut_mark;
    }
    return text;
}

} // namespace quorvex
