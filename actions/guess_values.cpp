#include "actions/guess_values.h"

#include "actions/field_provider.h"
#include "actions/guess_matcher.h"
#include "actions/pattern_trial.h"
#include "host/filesystem_access.h"

#include <algorithm>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::string_view separators = "\\/|:";

/// Takes the part behind the last separator off the text, and the separator with it.
std::string_view take_last_part(std::string_view& text) {
    const std::size_t separator = text.find_last_of(separators);
    const std::string_view part = text.substr(separator == std::string_view::npos ? 0 : separator + 1);
    text = text.substr(0, separator == std::string_view::npos ? 0 : separator);
    return part;
}

std::string_view without_extension(std::string_view file_name) {
    const std::string_view before_query = file_name.substr(0, file_name.find('?'));
    const std::size_t dot = before_query.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? file_name : file_name.substr(0, dot);
}

PatternResult try_file_name(std::span<const std::string> texts, const PatternSample* sample) {
    if (!sample)
        return {};
    const std::string path = filesystem::g_get_display_path(sample->track->path());
    TrackInfoRecord fields;
    guess_fields_from_path(fields, path, texts[GuessFromFileName::pattern]);
    std::string_view rest = path;
    return guessed(fields, take_last_part(rest));
}

/// The source has no time.
PatternResult try_source(std::span<const std::string> texts, const PatternSample* sample) {
    return try_title_pattern(texts[GuessFromFields::source], sample, 0);
}

PatternResult try_pattern(std::span<const std::string> texts, const PatternSample* sample) {
    PatternResult source = try_source(texts, sample);
    return source.state == PatternResult::State::result
               ? try_guess_pattern(source.text, texts[GuessFromFields::pattern])
               : source;
}

constexpr Control file_name_controls[] = {
    label("Scheme:", {5, 3, 32, 8}),
    drop_down(1007, 4, 12, 252),
    ok_button(148, 28),
    cancel_button(204, 28),
};
constexpr SettingControl bound_file_name[] = {
    {1007, GuessFromFileName::pattern, a_pattern, &guess_pattern_history, try_file_name},
};
constexpr Control fields_controls[] = {
    label("Source format:", {4, 4, 92, 8}),
    drop_down(1028, 4, 12, 252),
    label("Guessing pattern:", {4, 28, 136, 8}),
    drop_down(1008, 4, 37, 252),
    ok_button(148, 56),
    cancel_button(204, 56),
};
constexpr SettingControl bound_fields[] = {
    {1028, GuessFromFields::source, a_pattern, &formatting_pattern_history, try_source},
    {1008, GuessFromFields::pattern, a_pattern, &guess_pattern_history, try_pattern},
};

} // namespace

constinit const SettingsDialog GuessFromFileName::dialog{
    {127, "Guess value from filename", 260, 44, file_name_controls}, bound_file_name};
constinit const SettingsDialog GuessFromFields::dialog{
    {130, "Guess value from other fields", 260, 74, fields_controls}, bound_fields};

void guess_fields_from_path(TrackInfo& target, std::string_view path, std::string_view pattern) {
    for (bool is_file_name = true; !path.empty() && !pattern.empty(); is_file_name = false) {
        const std::string_view segment = take_last_part(pattern);
        const std::string_view component = take_last_part(path);
        if (!segment.empty())
            guess_fields(target, is_file_name ? without_extension(component) : component, segment);
    }
}

void GuessFromFileName::get_description(TextSink& out) {
    set_text(out, "Guess values from filename: \"" + text(pattern) + '"');
}

void GuessFromFileName::apply(TrackHandle* track, TrackInfo& info, std::uint32_t, std::uint32_t) {
    guess_fields_from_path(info, filesystem::g_get_display_path(track->path()), text(pattern));
}

void GuessFromFields::get_description(TextSink& out) {
    set_text(out, "Guess value from other fields");
}

void GuessFromFields::apply(TrackHandle* track, TrackInfo& info, std::uint32_t index, std::uint32_t total) {
    FieldProvider fields(index, total, 0);
    guess_fields(info, source_script_.format(text(source), *track, info, &fields), text(pattern));
}

} // namespace quorvex
