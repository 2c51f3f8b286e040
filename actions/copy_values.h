// "Copy values between fields...": makes one field a copy of another one, all values in their order. A field
// copied onto itself stays as it is.
//
// Parameter text: the source field, the destination field, a line each.
#pragma once

#include "actions/action_base.h"

#include <string>

namespace quorvex {

class CopyValues final : public ActionBase<CopyValues> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{CE928A7A-4793-4797-AEBD-60DE490E4AF1}");
    static constexpr const char* menu_name = "Copy values between fields...";

    static vantaro::Ref<Action> create() { return vantaro::make_service<CopyValues>(); }
    /// Throws: vantaro_io::exception_io_data when the text does not hold exactly one line feed.
    static vantaro::Ref<Action> create_from_text(std::string_view text);

    void get_description(vantaro::TextSink& out) override;
    void get_parameter_text(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    std::string source_;
    std::string destination_;
};

} // namespace quorvex
