#include "actions/input_data.h"

#include "actions/guess_matcher.h"
#include "actions/parameter_text.h"
#include "component/configuration.h"
#include "host/shared/text.h"

namespace quorvex {

using namespace vantaro;

Ref<Action> InputData::create() {
    return make_service<InputData>(text_setting(setting::last_input_data_scheme).get(), "");
}

Ref<Action> InputData::create_from_text(std::string_view text) {
    const auto [scheme, data] = split_first_line(text);
    return make_service<InputData>(scheme, data);
}

InputData::InputData(std::string_view scheme, std::string_view data) : scheme_(scheme), data_(data) {
    for (std::size_t start = 0; start < data_.size();) {
        line_starts_.push_back(start);
        const std::size_t end = data_.find('\n', start);
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
}

void InputData::get_parameter_text(TextSink& out) {
    std::string text;
    uReplaceCharAdd(text, scheme_, '\n', '|');
    set_text(out, text + '\n' + data_);
}

void InputData::apply(TrackHandle*, TrackInfo& info, std::uint32_t index, std::uint32_t) {
    if (index >= line_starts_.size())
        return;
    const std::string_view rest = std::string_view(data_).substr(line_starts_[index]);
    const std::string_view line = rest.substr(0, rest.find_first_of("\r\n"));
    if (!line.empty())
        guess_fields(info, line, scheme_);
}

} // namespace quorvex
