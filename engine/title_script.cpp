#include "engine/title_script.h"

#include "host/shared/failure.h"

namespace quorvex {

using namespace vantaro;

TitleFormatScript& TitleScript::compiled(const std::string& pattern) {
    if (!script_) {
        const auto compiler = required_service<TitleFormatCompiler>();
        TitleFormatScript* script = nullptr;
        if (!compiler->compile(script, pattern.c_str()) && !compiler->compile(script, error_pattern))
            uBugCheck("the pattern that stands for errors does not compile");
        script_ = Ref<TitleFormatScript>::adopt(script);
    }
    return *script_;
}

std::string TitleScript::format(const std::string& pattern, TrackHandle& track, const TrackInfo& info,
                                TitleFormatHook* hook) {
    return text_of(
        [&](TextSink& out) { track.format_title_from(info, hook, out, compiled(pattern), nullptr); });
}

std::string TitleScript::format_held(const std::string& pattern, TrackHandle& track,
                                     TitleFormatTextFilter* filter) {
    return text_of([&](TextSink& out) { track.format_title(nullptr, out, compiled(pattern), filter); });
}

} // namespace quorvex
