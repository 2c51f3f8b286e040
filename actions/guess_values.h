// Kinds that take fields out of a text by a guess pattern: "Guess values from file names..." out of the
// track's path, "Guess values from other fields..." out of what a title-formatting pattern gives.
//
// Parameter texts: the guess pattern; the guess pattern, a line feed, the source format (which may hold more
// line feeds).
#pragma once

#include "actions/action_base.h"
#include "engine/title_script.h"

namespace quorvex {

/// Sets fields from the end of a path: the pattern and the path are taken apart at "\", "/", "|" and ":", and
/// the parts matched from the right, the last one without the extension of the file name. A part of the
/// pattern that is empty passes over one part of the path.
void guess_fields_from_path(vantaro::TrackInfo& target, std::string_view path, std::string_view pattern);

class GuessFromFileName final : public ConfiguredAction<GuessFromFileName, 1> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{7D1706A9-F5D6-4307-987C-ED46FB09CF2A}");
    static constexpr const char* menu_name = "Guess values from file names...";
    enum : std::size_t { pattern };
    static constexpr Setting settings[] = {{"pattern", SettingForm::rest, {}, &setting::last_guess_pattern}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

class GuessFromFields final : public ConfiguredAction<GuessFromFields, 2> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{CCC40077-8D24-4136-87A5-639B34168336}");
    static constexpr const char* menu_name = "Guess values from other fields...";
    enum : std::size_t { pattern, source };
    static constexpr Setting settings[] = {{"pattern", SettingForm::line, {}, &setting::last_guess_pattern},
                                           {"source", SettingForm::rest}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    void settings_changed() override { source_script_.drop(); }

    TitleScript source_script_;
};

} // namespace quorvex
