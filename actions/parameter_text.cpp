#include "actions/parameter_text.h"

#include "host/api/exceptions.h"

#include <algorithm>

namespace quorvex {

std::vector<std::string> split_settings(std::span<const Setting> settings, std::string_view parameters) {
    std::vector<std::string> texts;
    for (const Setting& setting : settings) {
        const bool is_last = &setting == &settings.back();
        const std::size_t end = is_last ? parameters.size() : parameters.find('\n');
        if (end == std::string_view::npos)
            throw vantaro_io::exception_io_data();
        const std::string_view text = parameters.substr(0, end);
        if (is_last && setting.form != SettingForm::rest && text.find('\n') != std::string_view::npos)
            throw vantaro_io::exception_io_data();
        if (setting.form == SettingForm::case_flag && text != "c" && text != "n")
            throw vantaro_io::exception_io_data();
        texts.emplace_back(text);
        parameters.remove_prefix(std::min(end + 1, parameters.size()));
    }
    return texts;
}

std::string join_settings(std::span<const std::string> texts) {
    std::string parameters;
    for (const std::string& text : texts) {
        if (&text != &texts.front())
            parameters += '\n';
        parameters += text;
    }
    return parameters;
}

void replace_line_feeds(std::span<const Setting> settings, std::span<std::string> texts) {
    for (std::size_t i = 0; i < settings.size(); ++i)
        if (settings[i].form == SettingForm::line)
            std::ranges::replace(texts[i], '\n', '|');
}

} // namespace quorvex
