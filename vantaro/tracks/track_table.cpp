#include "vantaro/tracks/track_table.h"

namespace vantaro::core {

bool Track::get_info(TrackInfoHolder*& out) {
    Ref<HeldInfo> info = held();
    if (!info)
        return false;
    Ref<TrackInfoHolder> previous = Ref<TrackInfoHolder>::adopt(out);
    out = info.detach();
    return true;
}

void Track::format_title(TitleFormatHook* hook, TextSink& out, TitleFormatScript& script,
                         TitleFormatTextFilter* filter) {
    static const TrackInfoRecord nothing;
    const Ref<HeldInfo> info = held();
    format_title_from(info ? info->info() : nothing, hook, out, script, filter);
}

void Track::format_title_from(const TrackInfo& info, TitleFormatHook* hook, TextSink& out,
                              TitleFormatScript& script, TitleFormatTextFilter* filter) {
    // Scripts come from this host's own compiler only.
    static_cast<TitleFormatProgram&>(script).run(*this, info, hook, out, filter);
}

void Track::hold(Ref<HeldInfo> info) {
    const std::lock_guard lock(mutex_);
    held_ = std::move(info);
}

Ref<HeldInfo> Track::held() const {
    const std::lock_guard lock(mutex_);
    return held_;
}

Track& TrackTable::get(std::string_view path, std::uint32_t subsong) {
    // A path holds no NUL byte, so this names one location only.
    std::string key(path);
    if (subsong != 0)
        key.append(1, '\0').append(std::to_string(subsong));
    const std::lock_guard lock(mutex_);
    Track*& entry = by_location_[std::move(key)];
    if (!entry)
        entry = &tracks_.emplace_back(std::string(path), subsong);
    return *entry;
}

} // namespace vantaro::core
