// A track in memory, and what patterns make of it.
//
//     SampleTrack track;
//     track.tags.set_field("TITLE", "Rope");
//     EXPECT_EQ(track.formatted("%title%"), "Rope");
//
// A pattern that does not compile gives "ERROR position: text".
#pragma once

#include "vantaro/titleformat/title_format.h"

#include <optional>
#include <string>
#include <string_view>

namespace vantaro::test {

/// The host of a component may have handles of its own: this one holds no tags unless it is told to.
class SampleTrack final : public StaticService<TrackHandle> {
public:
    explicit SampleTrack(TrackInfoRecord tags_held = {}) : tags(std::move(tags_held)) {}

    const char* path() const override { return location.c_str(); }
    std::uint32_t subsong() const override { return 0; }
    bool get_info(TrackInfoHolder*& out) override {
        if (!stats)
            return false;
        const auto previous = Ref<TrackInfoHolder>::adopt(out);
        out = make_service<core::HeldInfo>(tags, *stats, false).detach();
        return true;
    }
    void format_title(TitleFormatHook* hook, TextSink& out, TitleFormatScript& script,
                      TitleFormatTextFilter* filter) override {
        format_title_from(tags, hook, out, script, filter);
    }
    void format_title_from(const TrackInfo& info, TitleFormatHook* hook, TextSink& out,
                           TitleFormatScript& script, TitleFormatTextFilter* filter) override {
        static_cast<core::TitleFormatProgram&>(script).run(*this, info, hook, out, filter);
    }

    std::string formatted(std::string_view pattern, TitleFormatHook* hook = nullptr,
                          TitleFormatTextFilter* filter = nullptr) {
        auto compiled = core::compile_title_format(pattern);
        if (const auto* error = std::get_if<core::TitleFormatError>(&compiled))
            return "ERROR " + std::to_string(error->position) + ": " + error->text;
        StringSink out;
        format_title(hook, out, *std::get<Ref<core::TitleFormatProgram>>(compiled), filter);
        return out.take();
    }

    std::string location = "/music/Sample.flac";
    TrackInfoRecord tags;
    std::optional<FileStats> stats;
};

} // namespace vantaro::test
