#include "vantaro/tags/text.h"

#include "vantaro/common/utf8.h"

#include <tstring.h>

#include <unicode/unistr.h>

#include <algorithm>

namespace vantaro::core::tags {

namespace {

std::string to_utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result); // lone surrogates become U+FFFD
    return result;
}

icu::UnicodeString from_utf8(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

unsigned char byte_at(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

std::string decode_utf16(std::string_view bytes, bool& big_endian) {
    if (bytes.size() >= 2) {
        const unsigned mark = static_cast<unsigned>(byte_at(bytes, 0) << 8 | byte_at(bytes, 1));
        if (mark == 0xFEFF || mark == 0xFFFE) {
            big_endian = mark == 0xFEFF;
            bytes.remove_prefix(2);
        }
    }
    icu::UnicodeString text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const unsigned first = byte_at(bytes, i);
        const unsigned second = byte_at(bytes, i + 1);
        text.append(static_cast<char16_t>(big_endian ? first << 8 | second : second << 8 | first));
    }
    return to_utf8(text);
}

std::size_t find_wide_nul(std::string_view bytes, std::size_t from) {
    for (std::size_t i = from; i + 1 < bytes.size(); i += 2)
        if (bytes[i] == 0 && bytes[i + 1] == 0)
            return i;
    return std::string_view::npos;
}

} // namespace

std::string upper_name(std::string_view name) {
    std::string result(name);
    for (char& c : result)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return result;
}

bool is_ascii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string clean_text(std::string_view utf8) {
    utf8 = utf8.substr(0, utf8.find('\0'));
    return is_ascii(utf8) ? std::string(utf8) : to_utf8(from_utf8(utf8));
}

std::string utf8_or_latin1(std::string_view bytes) {
    bytes = bytes.substr(0, bytes.find('\0'));
    return is_utf8(bytes) ? std::string(bytes) : from_latin1(bytes);
}

std::string from_latin1(std::string_view bytes) {
    std::string result;
    for (const char c : bytes) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x80) {
            result += c;
        } else {
            result += static_cast<char>(0xC0 | code >> 6);
            result += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return result;
}

std::optional<std::string> to_latin1(std::string_view utf8) {
    const icu::UnicodeString text = from_utf8(utf8);
    std::string result;
    for (int32_t i = 0; i < text.length(); ++i) {
        if (text.charAt(i) > 0xFF)
            return std::nullopt;
        result += static_cast<char>(text.charAt(i));
    }
    return result;
}

std::string_view terminator(TextEncoding encoding) {
    const bool wide = encoding == TextEncoding::utf16 || encoding == TextEncoding::utf16be;
    return {"\0\0", wide ? std::size_t{2} : std::size_t{1}};
}

Values decode_strings(std::string_view bytes, TextEncoding encoding) {
    const bool wide = terminator(encoding).size() == 2;
    bool big_endian = encoding == TextEncoding::utf16be;
    Values strings;
    for (std::size_t start = 0; start < bytes.size();) {
        std::size_t end = wide ? find_wide_nul(bytes, start) : bytes.find('\0', start);
        end = std::min(end, bytes.size());
        const std::string_view part = bytes.substr(start, end - start);
        if (wide)
            strings.push_back(decode_utf16(part, big_endian));
        else
            strings.push_back(encoding == TextEncoding::utf8 ? clean_text(part) : from_latin1(part));
        start = end + terminator(encoding).size();
    }
    return strings;
}

std::string encode_strings(const Values& strings, TextEncoding encoding) {
    std::string result;
    for (std::size_t i = 0; i < strings.size(); ++i) {
        if (i != 0)
            result += terminator(encoding);
        if (encoding == TextEncoding::utf8) {
            result += strings[i];
        } else if (encoding == TextEncoding::latin1) {
            result += to_latin1(strings[i]).value_or("");
        } else {
            icu::UnicodeString text = from_utf8(strings[i]);
            if (encoding == TextEncoding::utf16)
                text.insert(0, char16_t{0xFEFF});
            for (int32_t j = 0; j < text.length(); ++j) {
                const char low = static_cast<char>(text.charAt(j) & 0xFF);
                const char high = static_cast<char>(text.charAt(j) >> 8);
                const bool little_endian = encoding == TextEncoding::utf16;
                result += little_endian ? low : high;
                result += little_endian ? high : low;
            }
        }
    }
    return result;
}

std::string from_taglib(const TagLib::String& text) {
    return clean_text(text.to8Bit(true));
}

TagLib::String to_taglib(std::string_view utf8) {
    return {std::string(utf8), TagLib::String::UTF8};
}

} // namespace vantaro::core::tags
