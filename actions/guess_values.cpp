#include "actions/guess_values.h"

#include "actions/field_provider.h"
#include "actions/guess_matcher.h"
#include "actions/parameter_text.h"
#include "component/configuration.h"
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

} // namespace

void guess_fields_from_path(TrackInfo& target, std::string_view path, std::string_view pattern) {
    for (bool is_file_name = true; !path.empty() && !pattern.empty(); is_file_name = false) {
        const std::string_view segment = take_last_part(pattern);
        const std::string_view component = take_last_part(path);
        if (!segment.empty())
            guess_fields(target, is_file_name ? without_extension(component) : component, segment);
    }
}

Ref<Action> GuessFromFileName::create() {
    return create_from_text(text_setting(setting::last_guess_pattern).get());
}

void GuessFromFileName::get_description(TextSink& out) {
    set_text(out, "Guess values from filename: \"" + pattern_ + '"');
}

void GuessFromFileName::apply(TrackHandle* track, TrackInfo& info, std::uint32_t, std::uint32_t) {
    guess_fields_from_path(info, filesystem::g_get_display_path(track->path()), pattern_);
}

Ref<Action> GuessFromFields::create() {
    return make_service<GuessFromFields>(text_setting(setting::last_guess_pattern).get(), "");
}

Ref<Action> GuessFromFields::create_from_text(std::string_view text) {
    const auto [pattern, source] = split_first_line(text);
    return make_service<GuessFromFields>(pattern, source);
}

void GuessFromFields::get_description(TextSink& out) {
    set_text(out, "Guess value from other fields");
}

void GuessFromFields::get_parameter_text(TextSink& out) {
    replace_line_feeds(pattern_);
    set_text(out, pattern_ + '\n' + source_.pattern());
}

void GuessFromFields::apply(TrackHandle* track, TrackInfo& info, std::uint32_t index, std::uint32_t total) {
    FieldProvider fields(index, total, 0);
    guess_fields(info, source_.format(*track, info, &fields), pattern_);
}

} // namespace quorvex
