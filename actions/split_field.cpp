#include "actions/split_field.h"

#include <algorithm>
#include <vector>

namespace quorvex {

using namespace vantaro;

namespace {

void add_parts(std::string_view value, std::string_view separator, std::vector<std::string>& parts) {
    const auto add = [&](std::string_view part) {
        if (!part.empty())
            parts.emplace_back(part);
    };
    while (true) {
        value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
        const std::size_t end = value.find(separator);
        if (end == std::string_view::npos)
            return add(value);
        const std::string_view part = value.substr(0, end);
        add(part.substr(0, part.find_last_not_of(' ') + 1));
        value.remove_prefix(end + separator.size());
    }
}

constexpr Control controls[] = {
    label("Field name:", {4, 4, 66, 8}),
    field_name_box(1024, 4, 12, 244),
    label("Separator:", {4, 28, 78, 8}),
    edit(1023, {4, 36, 244, 12}, control_flag::scrolls),
    ok_button(140, 56),
    cancel_button(196, 56),
};
constexpr SettingControl bound[] = {
    {1024, SplitField::field_name, a_field_name, &field_name_history},
    {1023, SplitField::separator, not_empty("Please enter a separator string.")},
};

} // namespace

constinit const SettingsDialog SplitField::dialog{{129, "Split field by separator", 252, 76, controls},
                                                  bound};

bool split_field(const char* field_name, std::string_view separator, TrackInfo& info) {
    const std::size_t field = info.find_field(field_name);
    if (separator.empty() || field == no_field)
        return false;
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < info.value_count(field); ++i)
        add_parts(info.value(field, i), separator, parts);
    if (parts.empty())
        return false;
    info.set_field(field_name, parts.front().c_str());
    for (std::size_t i = 1; i < parts.size(); ++i)
        info.insert_value(field, i, parts[i].c_str());
    return true;
}

void SplitField::get_description(TextSink& out) {
    set_text(out, "Split \"" + text(field_name) + "\" field by \"" + text(separator) + "\" separator");
}

void SplitField::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    split_field(text(field_name).c_str(), text(separator), info);
}

void SplitArtists::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    split_field("artist", ",", info);
    split_field("artist", "&", info);
}

} // namespace quorvex
