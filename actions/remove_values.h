// "Remove values...": removes chosen values from one field; the others stay in their order.
//
// Parameter text: the field name, the values (separated by ";"), "c" (case-sensitive) or "n", a line each.
#pragma once

#include "actions/action_base.h"

#include <string>

namespace quorvex {

class RemoveValues final : public ActionBase<RemoveValues> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{CB1F5EF2-7865-40E7-8DDE-D51C3721AC79}");
    static constexpr const char* menu_name = "Remove values...";

    static vantaro::Ref<Action> create() { return vantaro::make_service<RemoveValues>(); }
    /// Throws: vantaro_io::exception_io_data.
    static vantaro::Ref<Action> create_from_text(std::string_view text);

    void get_description(vantaro::TextSink& out) override;
    void get_parameter_text(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    std::string field_name_;
    std::string values_;
    bool case_sensitive_ = false;
};

} // namespace quorvex
