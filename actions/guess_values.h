// Kinds that take fields out of a text by a guess pattern: "Guess values from file names..." out of the
// track's path, "Guess values from other fields..." out of what a title-formatting pattern gives.
//
// Parameter texts: the guess pattern; the guess pattern, a line feed, the source format (which may hold more
// line feeds).
#pragma once

#include "actions/action_base.h"
#include "actions/title_script.h"

#include <string>

namespace quorvex {

/// Sets fields from the end of a path: the pattern and the path are taken apart at "\", "/", "|" and ":", and
/// the parts matched from the right, the last one without the extension of the file name. A part of the
/// pattern that is empty passes over one part of the path.
void guess_fields_from_path(vantaro::TrackInfo& target, std::string_view path, std::string_view pattern);

class GuessFromFileName final : public ActionBase<GuessFromFileName> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{7D1706A9-F5D6-4307-987C-ED46FB09CF2A}");
    static constexpr const char* menu_name = "Guess values from file names...";

    /// Starts with the pattern that was last confirmed in a settings dialog.
    static vantaro::Ref<Action> create();
    static vantaro::Ref<Action> create_from_text(std::string_view text) {
        return vantaro::make_service<GuessFromFileName>(text);
    }
    explicit GuessFromFileName(std::string_view pattern) : pattern_(pattern) {}

    void get_description(vantaro::TextSink& out) override;
    void get_parameter_text(vantaro::TextSink& out) override { vantaro::set_text(out, pattern_); }
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    std::string pattern_;
};

class GuessFromFields final : public ActionBase<GuessFromFields> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{CCC40077-8D24-4136-87A5-639B34168336}");
    static constexpr const char* menu_name = "Guess values from other fields...";

    /// Starts with the pattern that was last confirmed in a settings dialog, and no source.
    static vantaro::Ref<Action> create();
    /// Throws: vantaro_io::exception_io_data when the text holds no line feed.
    static vantaro::Ref<Action> create_from_text(std::string_view text);
    GuessFromFields(std::string_view pattern, std::string_view source) : pattern_(pattern), source_(source) {}

    void get_description(vantaro::TextSink& out) override;
    void get_parameter_text(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    std::string pattern_;
    TitleScript source_;
};

} // namespace quorvex
