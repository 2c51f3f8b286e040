#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/number_text.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <chrono>
#include <deque>
#include <memory>
#include <string>

namespace vantaro::core::functions {

namespace {

constexpr std::size_t longest_pattern = 10'000;
// What one search may take; ICU counts it in units of about a millisecond, and between its tries by the
// clock.
constexpr std::int32_t time_units = 400;
constexpr std::chrono::milliseconds most_time(250);
constexpr std::int32_t stack_bytes = 1 << 20;
// A search that took all of its time has used this much of what the run has.
constexpr std::uint64_t work_of_failure = title_format_work_limit / 8;
constexpr std::uint64_t work_of_compiling = 1 << 12;
constexpr std::uint64_t work_per_byte = 8;

struct CachedPattern {
    std::string text;
    bool ignores_case = false;
    std::unique_ptr<icu::RegexPattern> compiled; // empty when the text is no regular expression
};

icu::UnicodeString to_utf16(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

/// The pattern of that text; nullptr when it is no regular expression. A pattern uses a few of them for many
/// tracks, so the last ones of each thread are kept.
const icu::RegexPattern* find_pattern(Call& call, std::string_view text, bool ignores_case) {
    constexpr std::size_t most_kept = 8;
    thread_local std::deque<CachedPattern> kept;
    for (const CachedPattern& pattern : kept)
        if (pattern.text == text && pattern.ignores_case == ignores_case)
            return pattern.compiled.get();
    if (text.size() > longest_pattern)
        return nullptr;
    call.charge(work_of_compiling + text.size() * work_per_byte);
    UErrorCode error = U_ZERO_ERROR;
    UParseError place;
    std::unique_ptr<icu::RegexPattern> compiled(icu::RegexPattern::compile(
        to_utf16(text), ignores_case ? std::uint32_t{UREGEX_CASE_INSENSITIVE} : 0, place, error));
    if (U_FAILURE(error))
        compiled.reset();
    kept.push_front({std::string(text), ignores_case, std::move(compiled)});
    if (kept.size() > most_kept)
        kept.pop_back();
    return kept.front().compiled.get();
}

/// Searches one text. `failed()` tells that a limit was reached, or the pattern is none.
class Search {
public:
    Search(Call& call, std::string_view text, std::string_view pattern, bool ignores_case)
        : call_(call), text_(to_utf16(text)) {
        const icu::RegexPattern* compiled = find_pattern(call, pattern, ignores_case);
        if (!compiled) {
            error_ = U_REGEX_RULE_SYNTAX;
            return;
        }
        call.charge(text.size() * work_per_byte);
        matcher_.reset(compiled->matcher(text_, error_));
        if (U_FAILURE(error_))
            return;
        matcher_->setTimeLimit(time_units, error_);
        matcher_->setStackLimit(stack_bytes, error_);
        matcher_->setFindProgressCallback(&Search::has_time_left, this, error_);
    }
    ~Search() {
        if (is_too_slow_ || error_ == U_REGEX_TIME_OUT || error_ == U_REGEX_STACK_OVERFLOW)
            call_.spend(work_of_failure);
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    /// The next match, behind the one before.
    bool find() {
        call_.charge(work_per_byte);
        return U_SUCCESS(error_) && matcher_->find(error_) && U_SUCCESS(error_);
    }
    bool failed() const { return U_FAILURE(error_); }

    const icu::UnicodeString& text() const { return text_; }
    std::int32_t group_count() const { return matcher_->groupCount(); }
    /// Whether the group took part in the match.
    bool has_group(std::int32_t group) {
        return group <= group_count() && matcher_->start(group, error_) >= 0 && U_SUCCESS(error_);
    }
    std::int32_t start(std::int32_t group = 0) { return matcher_->start(group, error_); }
    std::int32_t end(std::int32_t group = 0) { return matcher_->end(group, error_); }
    std::int32_t group_of_name(std::string_view name) {
        UErrorCode error = U_ZERO_ERROR;
        const std::int32_t group = matcher_->pattern().groupNumberFromName(to_utf16(name), error);
        return U_SUCCESS(error) ? group : group_count() + 1;
    }

    void put(std::int32_t from, std::int32_t to, TextBuffer& out) const {
        std::string bytes;
        text_.tempSubStringBetween(from, to).toUTF8String(bytes);
        out.append(bytes);
    }

private:
    static UBool has_time_left(const void* context, std::int64_t) {
        auto& search = *const_cast<Search*>(static_cast<const Search*>(context));
        // Looking at the clock at each character would take longer than most searches.
        if (++search.tries_ % 256 == 0 && std::chrono::steady_clock::now() > search.deadline_)
            search.is_too_slow_ = true;
        return search.is_too_slow_ ? 0 : 1;
    }

    Call& call_;
    icu::UnicodeString text_;
    std::unique_ptr<icu::RegexMatcher> matcher_;
    UErrorCode error_ = U_ZERO_ERROR;
    std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::now() + most_time;
    std::uint64_t tries_ = 0;
    bool is_too_slow_ = false;
};

/// "\1" and "$1" stand for groups, "\0" and "$0" for the whole match; a backslash before anything else for
/// that.
void put_replacement(Search& search, std::string_view replacement, TextBuffer& out) {
    for (std::size_t at = 0; at < replacement.size(); ++at) {
        const char c = replacement[at];
        const bool has_next = at + 1 < replacement.size();
        if ((c == '\\' || c == '$') && has_next && is_ascii_digit(replacement[at + 1])) {
            const std::int32_t group = replacement[++at] - '0';
            if (search.has_group(group))
                search.put(search.start(group), search.end(group), out);
        } else if (c == '\\' && has_next) {
            out.append(replacement[++at]);
        } else {
            out.append(c);
        }
    }
}

bool ignores_case(const Call& call, std::size_t argument) {
    return call.count() > argument && !is_true(call.text(argument));
}

} // namespace

void rreplace(Call& call) {
    Search search(call, call.text(0), call.text(1), ignores_case(call, 3));
    std::int32_t copied = 0;
    bool has_match = false;
    while (search.find()) {
        has_match = true;
        search.put(copied, search.start(), call.out());
        put_replacement(search, call.text(2), call.out());
        copied = search.end();
    }
    if (has_match && !search.failed())
        return search.put(copied, search.text().length(), call.out());
    // Untouched, bytes that are not UTF-8 included.
    call.out().clear();
    call.out().append(call.text(0));
}

void rsearch(Call& call) {
    Search search(call, call.text(0), call.text(1), false);
    if (!search.find())
        return;
    std::int32_t group = 0;
    if (call.text(2).empty())
        for (std::int32_t i = 1; i <= search.group_count() && group == 0; ++i)
            group = search.has_group(i) ? i : 0;
    else if (const auto number = call.integer(2))
        group = *number >= 0 && *number <= search.group_count() ? static_cast<std::int32_t>(*number)
                                                                : search.group_count() + 1;
    else
        group = search.group_of_name(call.text(2));
    if (search.has_group(group))
        search.put(search.start(group), search.end(group), call.out());
}

void rmatch(Call& call) {
    Search search(call, call.text(0), call.text(1), ignores_case(call, 2));
    call.put_truth(search.find());
}

void rescape(Call& call) {
    for (const char c : call.text(0)) {
        if (std::string_view("^$[]\\+*?.(){},|").find(c) != std::string_view::npos)
            call.out().append('\\');
        call.out().append(c);
    }
}

} // namespace vantaro::core::functions
