// Kinds that delete whole fields: "Remove field...", "Remove all fields", "Remove all fields except for...".
// Technical fields are left alone.
//
// Parameter texts: the field name; nothing; the names of the fields to keep, separated by ";". None is
// malformed.
#pragma once

#include "actions/action_base.h"

namespace quorvex {

class RemoveField final : public ConfiguredAction<RemoveField, 1> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{C3BDD536-670A-4AFE-9C7C-BD72BAE9AA89}");
    static constexpr const char* menu_name = "Remove field...";
    enum : std::size_t { field_name };
    static constexpr Setting settings[] = {{"field", SettingForm::rest}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

class RemoveAllFields final : public SettinglessAction<RemoveAllFields> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{ADF2441C-9F27-4E39-BCE5-323AC91F9975}");
    static constexpr const char* menu_name = "Remove all fields";

    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

class RemoveAllFieldsExcept final : public ConfiguredAction<RemoveAllFieldsExcept, 1> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{58712BE7-4248-4AC6-9734-F3AD3D6CBA4E}");
    static constexpr const char* menu_name = "Remove all fields except for...";
    enum : std::size_t { kept };
    static constexpr Setting settings[] = {{"fields", SettingForm::rest, {}, &setting::kept_fields_list}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

} // namespace quorvex
