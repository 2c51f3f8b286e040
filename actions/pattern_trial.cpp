#include "actions/pattern_trial.h"

#include "actions/field_provider.h"
#include "actions/guess_matcher.h"
#include "engine/change_text.h"
#include "engine/title_script.h"
#include "host/shared/text.h"

#include <algorithm>
#include <chrono>

namespace quorvex {

using namespace vantaro;

namespace {

/// What the host says is wrong with the pattern; empty when it says nothing.
std::string explanation(const std::string& pattern) {
    std::string text;
    for_each_service<TitleFormatDiagnosis>([&](TitleFormatDiagnosis& diagnosis) {
        std::size_t position = 0;
        bool is_wrong = false;
        const std::string why =
            text_of([&](TextSink& out) { is_wrong = diagnosis.explain(pattern.c_str(), out, position); });
        if (!is_wrong)
            return;
        std::string_view before = std::string_view(pattern).substr(0, position);
        std::size_t character = 1;
        for (; !before.empty(); ++character)
            take_character(before);
        text = why + " (character " + std::to_string(character) + ')';
    });
    return text;
}

} // namespace

std::uint64_t present_time() {
    using namespace std::chrono;
    constexpr sys_days start = 1601y / January / 1;
    using Unit = duration<std::int64_t, std::ratio<1, 10'000'000>>;
    // Nanoseconds since 1601 would not fit.
    return static_cast<std::uint64_t>((duration_cast<Unit>(system_clock::now().time_since_epoch())
                                       - duration_cast<Unit>(start.time_since_epoch()))
                                          .count());
}

std::optional<PatternResult> pattern_fault(const std::string& pattern) {
    if (std::string text = explanation(pattern); !text.empty())
        return PatternResult{PatternResult::State::remark, std::move(text)};
    TitleFormatScript* compiled = nullptr;
    if (!required_service<TitleFormatCompiler>()->compile(compiled, pattern.c_str()))
        return PatternResult{PatternResult::State::remark, "The pattern does not compile."};
    Ref<TitleFormatScript>::adopt(compiled);
    return std::nullopt;
}

PatternResult try_title_pattern(const std::string& pattern, const PatternSample* sample, std::uint64_t time) {
    if (auto fault = pattern_fault(pattern))
        return *std::move(fault);
    if (!sample)
        return {};
    FieldProvider fields(sample->index, sample->total, time);
    return {PatternResult::State::result,
            TitleScript().format(pattern, *sample->track, sample->info, &fields)};
}

PatternResult try_guess_pattern(std::string_view subject, std::string_view pattern) {
    TrackInfoRecord fields;
    guess_fields(fields, subject, pattern);
    return guessed(fields, subject);
}

PatternResult guessed(const TrackInfo& fields, std::string_view subject) {
    if (fields.field_count() == 0)
        return {PatternResult::State::remark, "No fields found in \"" + std::string(subject) + '"'};
    return {PatternResult::State::result, describe_changes(TrackInfoRecord(), fields)};
}

} // namespace quorvex
