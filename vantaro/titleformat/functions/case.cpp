#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>

#include <algorithm>
#include <array>

namespace vantaro::core::functions {

namespace {

/// Lets ICU write into the text of a run, and so under its limit.
class BufferSink final : public icu::ByteSink {
public:
    explicit BufferSink(TextBuffer& out) : out_(out) {}
    void Append(const char* bytes, std::int32_t size) override {
        out_.append(std::string_view(bytes, static_cast<std::size_t>(size)));
    }

private:
    TextBuffer& out_;
};

icu::StringPiece piece(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

void put_upper(const Character& character, TextBuffer& out) {
    if (character.code_point < 0)
        out.append(character.bytes);
    else
        out.append_code_point(u_totitle(character.code_point));
}

void put_lower(const Character& character, TextBuffer& out) {
    if (character.code_point < 0)
        out.append(character.bytes);
    else
        out.append_code_point(u_tolower(character.code_point));
}

enum class Rest : std::uint8_t { lower, untouched };

/// One word, whose first character it raises.
void put_capitalised(std::string_view word, Rest rest, TextBuffer& out) {
    bool is_first = true;
    for (const Character& character : Characters(word)) {
        if (is_first)
            put_upper(character, out);
        else if (rest == Rest::lower)
            put_lower(character, out);
        else
            out.append(character.bytes);
        is_first = false;
    }
}

bool is_word_character(const Character& character) {
    return character.is_word() || character.is_apostrophe() || character.code_point < 0;
}

/// Cuts the text into words and what stands between them, and hands both on in order.
template <class UseWord>
void for_each_word(std::string_view text, TextBuffer& out, UseWord use) {
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t start = at;
        std::size_t end = at;
        bool is_word = false;
        while (at < text.size()) {
            const Character character = take_character(text, at);
            // An apostrophe begins no word.
            const bool belongs = is_word_character(character) && (end > start || !character.is_apostrophe());
            if (end == start)
                is_word = belongs;
            else if (belongs != is_word)
                break;
            end = at;
        }
        at = end;
        if (is_word)
            use(text.substr(start, end - start), start);
        else
            out.append(text.substr(start, end - start));
    }
}

bool is_roman_number(std::string_view word) {
    return word.find_first_not_of("IVXLCDM") == std::string_view::npos;
}

constexpr auto small_words = std::to_array<std::string_view>(
    {"a",   "an", "and",  "as", "at",   "but", "by",  "for", "from", "in",  "into", "nor", "of",
     "off", "on", "onto", "or", "over", "per", "the", "to",  "up",   "via", "vs",   "with"});
static_assert(std::ranges::is_sorted(small_words));

/// The small word that the word is, in whatever case; empty when it is none.
std::string_view small_word(std::string_view word) {
    std::array<char, 4> folded{};
    if (word.size() > folded.size())
        return {};
    std::ranges::transform(word, folded.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    const auto found = std::ranges::lower_bound(small_words, std::string_view(folded.data(), word.size()));
    return found != small_words.end() && *found == std::string_view(folded.data(), word.size())
               ? *found
               : std::string_view();
}

} // namespace

void upper(Call& call) {
    BufferSink sink(call.out());
    UErrorCode error = U_ZERO_ERROR;
    icu::CaseMap::utf8ToUpper("", 0, piece(call.text(0)), sink, nullptr, error);
}

void lower(Call& call) {
    BufferSink sink(call.out());
    UErrorCode error = U_ZERO_ERROR;
    icu::CaseMap::utf8ToLower("", 0, piece(call.text(0)), sink, nullptr, error);
}

void caps(Call& call) {
    if (call.count() == 1)
        return for_each_word(call.text(0), call.out(), [&](std::string_view word, std::size_t) {
            put_capitalised(word, Rest::lower, call.out());
        });
    const std::string_view after = call.text(1);
    call.charge(call.text(0).size() * (after.size() / 64)); // the characters are looked for one by one
    bool is_start = true;
    for (const Character& character : Characters(call.text(0))) {
        is_start ? put_upper(character, call.out()) : put_lower(character, call.out());
        is_start = find_text(after, character.bytes) != std::string_view::npos;
    }
}

void caps2(Call& call) {
    for_each_word(call.text(0), call.out(), [&](std::string_view word, std::size_t) {
        put_capitalised(word, Rest::untouched, call.out());
    });
}

void caps3(Call& call) {
    bool is_raised = false;
    for (const Character& character : Characters(call.text(0))) {
        if (!is_raised && character.is_letter()) {
            put_upper(character, call.out());
            is_raised = true;
        } else {
            put_lower(character, call.out());
        }
    }
}

void titlecase(Call& call) {
    const std::string_view text = call.text(0);
    std::size_t last = 0;
    {
        TextBuffer ignored(title_format_text_limit);
        for_each_word(text, ignored, [&](std::string_view, std::size_t start) { last = start; });
    }
    bool is_first = true;
    for_each_word(text, call.out(), [&](std::string_view word, std::size_t start) {
        // What ends a sentence or a title begins another one behind it.
        const std::string_view before = without_trailing_blanks(text.substr(0, start));
        const bool begins =
            is_first || before.ends_with('.') || before.ends_with(':') || before.ends_with('-');
        is_first = false;
        const std::string_view small = begins || start == last ? std::string_view() : small_word(word);
        if (small.empty())
            put_capitalised(word, Rest::untouched, call.out());
        else
            call.out().append(small);
    });
}

void capsroman(Call& call) {
    for_each_word(call.text(0), call.out(), [&](std::string_view word, std::size_t) {
        if (is_roman_number(word))
            call.out().append(word);
        else
            put_capitalised(word, Rest::lower, call.out());
    });
}

} // namespace vantaro::core::functions
