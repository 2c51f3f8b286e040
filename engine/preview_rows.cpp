#include "engine/preview_rows.h"

#include "engine/change_text.h"
#include "host/access.h"
#include "host/shared/text.h"

#include <algorithm>

namespace quorvex {

using namespace vantaro;

namespace {

/// Keeps control characters out of the list.
class WithoutControls final : public TitleFormatTextFilter {
public:
    void write(TitleFormatOutput& out, const char* text, std::size_t length) override {
        std::string clean(text, length);
        std::ranges::replace_if(
            clean, [](char c) { return c >= 0 && c < 0x20; }, '_');
        out.write(clean.data(), clean.size());
    }
};

} // namespace

std::string PreviewRows::name(std::size_t row) {
    if (row >= tracks().size())
        return no_cell;
    WithoutControls filter;
    return first_line(title_.format_held("%title%", *tracks()[row], &filter));
}

Preview PreviewRows::preview(const Script& script, std::size_t row, const Action* skipped) {
    if (row >= tracks().size())
        return {Effect::failure, no_cell};
    try {
        const Tags change = tags(script, row, skipped);
        const std::string text = preview_text(change.before, change.after);
        return {text == no_changes ? Effect::none : Effect::change, text};
    } catch (const std::exception& failure) {
        return {Effect::failure, preview_text(failure)};
    }
}

Effect PreviewRows::effect(const Script& script, std::size_t row, const Action* skipped) {
    try {
        const Tags change = tags(script, row, skipped);
        return changed_fields(change.before, change.after).empty() ? Effect::none : Effect::change;
    } catch (const std::exception&) {
        return Effect::failure;
    }
}

PreviewRows::Tags PreviewRows::tags(const Script& script, std::size_t row, const Action* skipped) {
    Tags result;
    if (const auto read = read_.find(row); read != read_.end()) {
        result.before = read->second->info;
    } else {
        TrackInfoHolder* held = nullptr;
        if (tracks()[row]->get_info(held))
            result.before = TrackInfoRecord(Ref<TrackInfoHolder>::adopt(held)->info());
    }
    const ConsoleSilence silence;
    result.after = dry_run_.outcome(script, row, result.before, skipped);
    return result;
}

} // namespace quorvex
