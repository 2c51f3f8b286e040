// "Replace value...": replaces every value of one field that equals an old value by a new one.
//
// Parameter text: the field name, the old value, the new value, "c" (case-sensitive) or "n", a line each.
#pragma once

#include "actions/action_base.h"

#include <string>

namespace quorvex {

class ReplaceValue final : public ActionBase<ReplaceValue> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{B194C3FE-DACE-4816-A230-A09921D55674}");
    static constexpr const char* menu_name = "Replace value...";

    static vantaro::Ref<Action> create() { return vantaro::make_service<ReplaceValue>(); }
    /// Throws: vantaro_io::exception_io_data.
    static vantaro::Ref<Action> create_from_text(std::string_view text);

    void get_description(vantaro::TextSink& out) override;
    void get_parameter_text(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    std::string field_name_;
    std::string old_value_;
    std::string new_value_;
    bool case_sensitive_ = false;
};

} // namespace quorvex
