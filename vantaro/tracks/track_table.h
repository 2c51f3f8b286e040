// Tracks: one handle for every location, and the tags that the host holds for each.
//
//     Track& track = tracks.get("/music/a.flac", 0);
//     track.hold(make_service<HeldInfo>(record, stats, false));
//
// Any thread. Handles live as long as the table, which outlives every component.
#pragma once

#include "host/api/title_format.h"
#include "host/api/track.h"
#include "host/api/track_info_record.h"

#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vantaro::core {

/// A compiled title-formatting script as the host's own handles run it.
class TitleFormatProgram : public HeapService<TitleFormatScript> {
public:
    virtual void run(TrackHandle& track, const TrackInfo& info, TitleFormatHook* hook, TextSink& out,
                     TitleFormatTextFilter* filter) = 0;
};

class HeldInfo final : public HeapService<TrackInfoHolder> {
public:
    HeldInfo(TrackInfoRecord record, const FileStats& stats, bool partial)
        : record_(std::move(record)), stats_(stats), partial_(partial) {}

    const TrackInfo& info() const override { return record_; }
    FileStats stats() const override { return stats_; }
    bool is_partial() const override { return partial_; }

private:
    const TrackInfoRecord record_;
    const FileStats stats_;
    const bool partial_;
};

class Track final : public StaticService<TrackHandle> {
public:
    Track(std::string path, std::uint32_t subsong) : path_(std::move(path)), subsong_(subsong) {}

    const char* path() const override { return path_.c_str(); }
    std::uint32_t subsong() const override { return subsong_; }
    bool get_info(TrackInfoHolder*& out) override;
    void format_title(TitleFormatHook* hook, TextSink& out, TitleFormatScript& script,
                      TitleFormatTextFilter* filter) override;
    void format_title_from(const TrackInfo& info, TitleFormatHook* hook, TextSink& out,
                           TitleFormatScript& script, TitleFormatTextFilter* filter) override;

    /// Replaces what the host holds of the track's tags.
    void hold(Ref<HeldInfo> info);
    Ref<HeldInfo> held() const;

private:
    const std::string path_;
    const std::uint32_t subsong_;
    mutable std::mutex mutex_; // guards held_
    Ref<HeldInfo> held_;
};

class TrackTable {
public:
    /// The handle of a location, made when there is none yet.
    Track& get(std::string_view path, std::uint32_t subsong);

private:
    std::mutex mutex_; // guards the two below
    std::deque<Track> tracks_;
    std::unordered_map<std::string, Track*> by_location_;
};

} // namespace vantaro::core
