// "Set value..." and "Add value...": give one field of every track a fixed value, as its only value or as one
// more.
//
// Parameter text: the field name, a line feed, the value.
#pragma once

#include "actions/action_base.h"

namespace quorvex {

/// The two kinds add this to what every action can do.
class FixedValueInterface : public Action {
public:
    /// Whether the value is added to the ones that are there.
    virtual bool adds() = 0;

protected:
    ~FixedValueInterface() = default;
};

template <class Kind>
class FixedValueAction : public ConfiguredAction<Kind, 2, FixedValueInterface> {
public:
    enum : std::size_t { field_name, field_value };
    static constexpr Setting settings[] = {{"field", SettingForm::line}, {"value", SettingForm::line}};

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
    bool adds() override { return Kind::adds_value; }
};

class SetValue final : public FixedValueAction<SetValue> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{C3DCFE2F-16F4-48B9-B0C4-961470019784}");
    static constexpr const char* menu_name = "Set value...";
    static constexpr const char* description_start = "Set \"";
    static constexpr bool adds_value = false;
    static const SettingsDialog dialog;
};

class AddValue final : public FixedValueAction<AddValue> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{A59C4F2C-223F-413C-A62B-8BB363DE7AB0}");
    static constexpr const char* menu_name = "Add value...";
    static constexpr const char* description_start = "Add \"";
    static constexpr bool adds_value = true;
    static const SettingsDialog dialog;
};

extern template class FixedValueAction<SetValue>;
extern template class FixedValueAction<AddValue>;

} // namespace quorvex
