#include "vantaro/tags/id3v2/id3v2_content.h"

#include "host/api/track_info_record.h"

#include <id3v1genres.h>
#include <tstring.h>

#include <algorithm>
#include <charconv>

namespace vantaro::core::tags {

namespace {

TextEncoding encoding_of(char byte) {
    return static_cast<unsigned char>(byte) <= 3 ? static_cast<TextEncoding>(byte) : TextEncoding::latin1;
}

TextEncoding best_encoding(const Values& strings, int version) {
    if (std::ranges::all_of(strings, [](const std::string& text) { return is_ascii(text); }))
        return TextEncoding::latin1;
    return version == 4 ? TextEncoding::utf8 : TextEncoding::utf16;
}

// Where the string that starts at `from` ends.
std::size_t string_end(std::string_view bytes, std::size_t from, TextEncoding encoding) {
    const std::string_view nul = terminator(encoding);
    for (std::size_t i = from; i + nul.size() <= bytes.size(); i += nul.size())
        if (bytes.substr(i, nul.size()) == nul)
            return i;
    return bytes.size();
}

std::optional<int> whole_number(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || number < 0)
        return std::nullopt;
    return number;
}

// The name that a number or one of ID3v2's two abbreviations stands for, or nothing.
std::string genre_of_reference(std::string_view reference) {
    if (reference == "RX")
        return "Remix";
    if (reference == "CR")
        return "Cover";
    const std::optional<int> number = whole_number(reference);
    return number && *number < 256 ? from_taglib(TagLib::ID3v1::genre(*number)) : std::string();
}

} // namespace

Values decode_text(std::string_view body) {
    return body.empty() ? Values() : decode_strings(body.substr(1), encoding_of(body[0]));
}

std::string encode_text(const Values& strings, int version) {
    const TextEncoding encoding = best_encoding(strings, version);
    return static_cast<char>(encoding) + encode_strings(strings, encoding);
}

std::optional<DescribedText> decode_described(std::string_view body) {
    if (body.size() < 4)
        return std::nullopt;
    Values strings = decode_strings(body.substr(4), encoding_of(body[0]));
    DescribedText text{std::string(body.substr(1, 3)), "", {}};
    if (!strings.empty()) {
        text.description = strings[0];
        text.texts.assign(strings.begin() + 1, strings.end());
    }
    return text;
}

std::string encode_described(const DescribedText& text, int version) {
    Values strings{text.description};
    strings.insert(strings.end(), text.texts.begin(), text.texts.end());
    const TextEncoding encoding = best_encoding(strings, version);
    return static_cast<char>(encoding) + text.language + encode_strings(strings, encoding);
}

std::optional<WebPage> decode_web_page(std::string_view body) {
    if (body.empty())
        return std::nullopt;
    const TextEncoding encoding = encoding_of(body[0]);
    const std::size_t end = string_end(body, 1, encoding);
    const Values description = decode_strings(body.substr(1, end - 1), encoding);
    const std::string_view address = body.substr(std::min(end + terminator(encoding).size(), body.size()));
    return WebPage{description.empty() ? "" : description[0],
                   from_latin1(address.substr(0, address.find('\0')))};
}

std::string encode_web_page(const WebPage& page, int version) {
    const TextEncoding encoding = best_encoding({page.description}, version);
    return static_cast<char>(encoding) + encode_strings({page.description}, encoding)
           + std::string(terminator(encoding)) + to_latin1(page.address).value_or("");
}

Values decode_genres(const Values& texts, int version) {
    Values genres;
    for (std::string_view text : texts) {
        const std::size_t of_other_texts = genres.size();
        while (text.starts_with('(') && !(version == 3 && text.starts_with("(("))) {
            const std::size_t end = text.find(')');
            const std::string genre = end == text.npos ? "" : genre_of_reference(text.substr(1, end - 1));
            if (genre.empty())
                break;
            genres.push_back(genre);
            text.remove_prefix(end + 1);
        }
        if (version == 3 && text.starts_with("(("))
            text.remove_prefix(1);
        const std::string name = genre_of_reference(text);
        // "(17)Rock" says the same twice.
        const bool repeats_reference = genres.size() > of_other_texts && genres.back() == text;
        if (!text.empty() && !repeats_reference)
            genres.push_back(name.empty() ? std::string(text) : name);
    }
    return genres;
}

std::string encode_genres(const Values& genres, int version) {
    Values texts = genres;
    if (version == 3)
        for (std::string& text : texts)
            if (text.starts_with('('))
                text.insert(0, "(");
    return encode_text(texts, version);
}

} // namespace vantaro::core::tags
