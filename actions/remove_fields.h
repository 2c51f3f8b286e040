// Kinds that delete whole fields: "Remove field...", "Remove all fields", "Remove all fields except for...".
// Technical fields are left alone.
//
// Parameter texts: the field name; nothing; the names of the fields to keep, separated by ";". None is
// malformed.
#pragma once

#include "actions/action_base.h"

#include <string>

namespace quorvex {

class RemoveField final : public ActionBase<RemoveField> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{C3BDD536-670A-4AFE-9C7C-BD72BAE9AA89}");
    static constexpr const char* menu_name = "Remove field...";

    static vantaro::Ref<Action> create() { return create_from_text({}); }
    static vantaro::Ref<Action> create_from_text(std::string_view text) {
        return vantaro::make_service<RemoveField>(text);
    }
    explicit RemoveField(std::string_view field_name) : field_name_(field_name) {}

    void get_description(vantaro::TextSink& out) override;
    void get_parameter_text(vantaro::TextSink& out) override { vantaro::set_text(out, field_name_); }
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    std::string field_name_;
};

class RemoveAllFields final : public SettinglessAction<RemoveAllFields> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{ADF2441C-9F27-4E39-BCE5-323AC91F9975}");
    static constexpr const char* menu_name = "Remove all fields";

    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

class RemoveAllFieldsExcept final : public ActionBase<RemoveAllFieldsExcept> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{58712BE7-4248-4AC6-9734-F3AD3D6CBA4E}");
    static constexpr const char* menu_name = "Remove all fields except for...";

    /// Starts with the list that was last confirmed in the settings dialog.
    static vantaro::Ref<Action> create();
    static vantaro::Ref<Action> create_from_text(std::string_view text) {
        return vantaro::make_service<RemoveAllFieldsExcept>(text);
    }
    explicit RemoveAllFieldsExcept(std::string_view kept) : kept_(kept) {}

    void get_description(vantaro::TextSink& out) override;
    void get_parameter_text(vantaro::TextSink& out) override { vantaro::set_text(out, kept_); }
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    std::string kept_;
};

} // namespace quorvex
