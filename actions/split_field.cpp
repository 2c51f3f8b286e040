#include "actions/split_field.h"

#include "actions/parameter_text.h"

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

} // namespace

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

Ref<Action> SplitField::create_from_text(std::string_view text) {
    const auto [name, separator] = split_first_line(text);
    auto action = make_service<SplitField>();
    action->field_name_ = name;
    action->separator_ = separator;
    return action;
}

void SplitField::get_description(TextSink& out) {
    set_text(out, "Split \"" + field_name_ + "\" field by \"" + separator_ + "\" separator");
}

void SplitField::get_parameter_text(TextSink& out) {
    replace_line_feeds(field_name_);
    set_text(out, field_name_ + '\n' + separator_);
}

void SplitField::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    split_field(field_name_.c_str(), separator_, info);
}

void SplitArtists::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    split_field("artist", ",", info);
    split_field("artist", "&", info);
}

} // namespace quorvex
