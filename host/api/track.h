// TrackHandle: the host's reference to one track, and the tags that the host holds for it.
//
//     StringSink title;
//     track->format_title(nullptr, title, *script, nullptr);
//     TrackInfoHolder* held = nullptr;
//     if (track->get_info(held)) { auto info = Ref<TrackInfoHolder>::adopt(held); ... }
//
// There is one handle per location: two handles are the same track exactly when they are the same object.
// Every operation may be called from any thread.
#pragma once

#include "host/api/service.h"
#include "host/api/text_sink.h"
#include "host/api/track_info.h"

#include <cstdint>

namespace vantaro {

class TitleFormatHook;
class TitleFormatScript;
class TitleFormatTextFilter;

/// What the file was when its tags were read.
struct FileStats {
    static constexpr std::uint64_t unknown_size = ~std::uint64_t{0};
    /// In bytes.
    std::uint64_t size = unknown_size;
    /// Of the last change, in units of 100 ns since 1601-01-01 UTC; 0 when unknown.
    std::uint64_t timestamp = 0;

    friend bool operator==(const FileStats&, const FileStats&) = default;
};

/// One immutable snapshot of a track's tags.
class TrackInfoHolder : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{6B1C2F0E-93C4-4C2B-8E52-1D7A60D0B7A4}");

    virtual const TrackInfo& info() const = 0;
    virtual FileStats stats() const = 0;
    /// Whether there may be more in the file than the snapshot has.
    virtual bool is_partial() const = 0;

protected:
    ~TrackInfoHolder() = default;
};

class TrackHandle : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{2E0B6A55-7D0F-4E0B-A1B5-0C8B9A7A2B6D}");

    /// The path, NUL-terminated bytes as the file system has them. Valid as long as the handle.
    virtual const char* path() const = 0;
    /// Which of the tracks in the file; 0 where it holds one.
    virtual std::uint32_t subsong() const = 0;
    /// Stores what the host holds of the track's tags in `out`, with one reference for the caller, releasing
    /// what `out` held. Returns false, and leaves `out` alone, when the host holds nothing. Reads no file.
    virtual bool get_info(TrackInfoHolder*& out) = 0;
    /// Formats the track by what the host holds of its tags. `hook` and `filter` may be nullptr.
    virtual void format_title(TitleFormatHook* hook, TextSink& out, TitleFormatScript& script,
                              TitleFormatTextFilter* filter) = 0;
    /// The same with the given tags in place of the held ones.
    virtual void format_title_from(const TrackInfo& info, TitleFormatHook* hook, TextSink& out,
                                   TitleFormatScript& script, TitleFormatTextFilter* filter) = 0;

protected:
    ~TrackHandle() = default;
};

/// Receives tracks, one after the other.
class TrackSink {
public:
    /// `track` is borrowed for the call.
    virtual void add(TrackHandle* track) = 0;

protected:
    ~TrackSink() = default;
};

} // namespace vantaro
