#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"
#include "vantaro/titleformat/functions/number_text.h"
#include "vantaro/titleformat/functions/unaccented.h"

#include <unicode/normalizer2.h>
#include <unicode/translit.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <array>
#include <memory>

namespace vantaro::core {

namespace {

icu::UnicodeString to_utf16(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

std::string to_utf8(const icu::UnicodeString& text) {
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

bool is_mark(std::int32_t code_point) {
    return (U_GET_GC_MASK(code_point) & U_GC_MN_MASK) != 0;
}

bool is_latin(std::int32_t code_point) {
    UErrorCode error = U_ZERO_ERROR;
    return uscript_getScript(code_point, &error) == USCRIPT_LATIN;
}

void append_utf8(std::string& out, std::int32_t code_point) {
    icu::UnicodeString(code_point).toUTF8String(out);
}

} // namespace

std::string unaccented(std::string_view text) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2* compatibility = icu::Normalizer2::getNFKDInstance(error);
    std::string plain;
    plain.reserve(text.size());
    bool is_behind_latin = false;
    for (const Character& character : Characters(text)) {
        const std::int32_t code_point = character.code_point;
        if (code_point < 0x80) {
            plain += character.bytes;
            is_behind_latin = character.is_letter();
            continue;
        }
        if (is_mark(code_point)) {
            if (!is_behind_latin)
                plain += character.bytes;
            continue;
        }
        is_behind_latin = is_latin(code_point);
        icu::UnicodeString parts;
        // Character by character: putting long runs of marks in order would take quadratic time.
        if (!is_behind_latin || U_FAILURE(error) || !compatibility->getDecomposition(code_point, parts)) {
            plain += character.bytes;
            continue;
        }
        for (std::int32_t i = 0; i < parts.length(); i = parts.moveIndex32(i, 1))
            if (!is_mark(parts.char32At(i)))
                append_utf8(plain, parts.char32At(i));
    }
    return plain;
}

namespace functions {

namespace {

bool is_ascii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

enum class Ascii : std::uint8_t { transliterated, kept };

/// In pieces: replacing within one long text would take quadratic time. Pieces end behind a blank where there
/// is one, so that words stay whole.
void transliterate_pieces(Call& call, std::string_view text, const icu::Transliterator& transliterator,
                          Ascii ascii, TextBuffer& out) {
    constexpr std::size_t piece_size = 512;
    constexpr std::uint64_t work_per_byte = 256; // what it costs more than copying, about
    while (!text.empty()) {
        std::size_t end = std::min(piece_size, text.size());
        if (end < text.size()) {
            const std::size_t blank = text.substr(0, end).rfind(' ');
            if (blank != std::string_view::npos)
                end = blank + 1;
            else
                // Not within a character: at most three bytes follow its first one.
                for (int i = 0; i < 3 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80; ++i)
                    --end;
        }
        const std::string_view piece = text.substr(0, end);
        text.remove_prefix(end);
        if (ascii == Ascii::kept && is_ascii(piece)) {
            out.append(piece);
            continue;
        }
        call.charge(piece.size() * work_per_byte);
        icu::UnicodeString changed = to_utf16(piece);
        transliterator.transliterate(changed);
        out.append(to_utf8(changed));
    }
}

// What names of transliterators, and lists of them, and names of encodings are made of.
constexpr std::string_view name_characters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.:;/ ";

bool consists_of(std::string_view text, std::string_view characters) {
    return text.find_first_not_of(characters) == std::string_view::npos;
}

std::unique_ptr<icu::Transliterator> make_transliterator(std::string_view rules) {
    UErrorCode error = U_ZERO_ERROR;
    std::unique_ptr<icu::Transliterator> made(
        icu::Transliterator::createInstance(to_utf16(rules), UTRANS_FORWARD, error));
    return U_SUCCESS(error) ? std::move(made) : nullptr;
}

} // namespace

void ascii(Call& call) {
    const std::string_view text = call.text(0);
    if (is_ascii(text))
        return call.out().append(text);
    static const std::unique_ptr<icu::Transliterator> to_ascii =
        make_transliterator("Any-Latin; Latin-ASCII");
    TextBuffer latin(title_format_text_limit);
    if (to_ascii)
        transliterate_pieces(call, text, *to_ascii, Ascii::kept, latin);
    for (const Character& character : Characters(latin.view()))
        if (character.code_point >= 0 && character.code_point < 0x80)
            call.out().append(character.bytes);
}

void transliterate(Call& call) {
    // Making one takes far longer than using it; a pattern uses one or two.
    constexpr std::size_t longest_name = 200;
    constexpr std::uint64_t work_of_making = 1 << 20;
    thread_local std::string name;
    thread_local std::unique_ptr<icu::Transliterator> made;
    const std::string_view wanted = call.text(1);
    // Names only: ICU's reader of the sets that it takes beside them loses memory when they are wrong.
    if (wanted.size() > longest_name || !consists_of(wanted, name_characters))
        return call.out().append(call.text(0));
    if (wanted != name) {
        call.charge(work_of_making);
        made = make_transliterator(wanted);
        name = wanted;
    }
    if (!made)
        return call.out().append(call.text(0));
    transliterate_pieces(call, call.text(0), *made, Ascii::transliterated, call.out());
}

void noaccents(Call& call) {
    call.out().append(unaccented(call.text(0)));
}

void asciionly(Call& call) {
    for (const Character& character : Characters(call.text(0)))
        if (character.code_point >= 0 && character.code_point < 0x80)
            call.out().append(character.bytes);
        else
            call.out().append(call.text(1, "_"));
}

void ord(Call& call) {
    const std::string_view text = call.text(0);
    std::size_t at = 0;
    if (text.empty())
        return;
    const Character character = take_character(text, at);
    if (at == text.size() && character.code_point >= 0)
        call.put_integer(character.code_point);
}

void char_(Call& call) {
    const auto number = call.integer(0);
    if (number && *number > 0 && *number <= UCHAR_MAX_VALUE && !U_IS_SURROGATE(*number))
        call.out().append_code_point(static_cast<std::int32_t>(*number));
}

void convert(Call& call) {
    const std::string_view text = call.text(0);
    const std::string encoding(call.text(1));
    constexpr std::size_t longest_name = 60;
    std::string bytes;
    for (const Character& character : Characters(text)) {
        if (character.code_point < 0 || character.code_point > 0xFF)
            return call.out().append(text);
        bytes += static_cast<char>(character.code_point);
    }
    UErrorCode error = U_ZERO_ERROR;
    // ICU takes a name for that of a file as well.
    if (encoding.empty() || encoding.size() > longest_name || !consists_of(encoding, name_characters)
        || encoding.find('/') != std::string::npos)
        return call.out().append(text);
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(encoding.c_str(), &error),
                                                                       &ucnv_close);
    if (U_FAILURE(error))
        return call.out().append(text);
    const icu::UnicodeString decoded(bytes.data(), static_cast<std::int32_t>(bytes.size()), converter.get(),
                                     error);
    if (U_FAILURE(error))
        return call.out().append(text);
    std::string result = to_utf8(decoded);
    std::erase(result, '\0');
    call.out().append(result);
}

void urlencode(Call& call) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (const char c : call.text(0)) {
        const auto byte = static_cast<unsigned char>(c);
        if (is_ascii_letter(c) || is_ascii_digit(c)
            || std::string_view("-._~").find(c) != std::string_view::npos) {
            call.out().append(c);
            continue;
        }
        call.out().append('%');
        call.out().append(digits[byte >> 4]);
        call.out().append(digits[byte & 15]);
    }
}

void htmlescape(Call& call) {
    for (const Character& character : Characters(call.text(0)))
        switch (character.code_point) {
        case '<':
            call.out().append("&lt;");
            break;
        case '>':
            call.out().append("&gt;");
            break;
        case '&':
            call.out().append("&amp;");
            break;
        case '"':
            call.out().append("&quot;");
            break;
        case '\'':
            call.out().append("&#39;");
            break;
        default:
            if (character.code_point >= 0 && character.code_point < 0x80)
                call.out().append(character.bytes);
            else if (character.code_point >= 0)
                call.out().append("&#" + std::to_string(character.code_point) + ";");
            else
                call.out().append("&#65533;");
        }
}

void unescape(Call& call) {
    struct Escape {
        char letter;
        char meaning;
    };
    constexpr auto escapes = std::to_array<Escape>({{'n', '\n'},
                                                    {'t', '\t'},
                                                    {'r', '\r'},
                                                    {'\\', '\\'},
                                                    {'a', '\a'},
                                                    {'b', '\b'},
                                                    {'f', '\f'},
                                                    {'v', '\v'}});
    const std::string_view text = call.text(0);
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char next = text[at] == '\\' && at + 1 < text.size() ? text[at + 1] : '\0';
        const auto* escape = std::ranges::find(escapes, next, &Escape::letter);
        if (escape == escapes.end()) {
            call.out().append(text[at]);
            continue;
        }
        call.out().append(escape->meaning);
        ++at;
    }
}

} // namespace functions
} // namespace vantaro::core
