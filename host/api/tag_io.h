// HostTagIO: from location texts to tracks, from tracks to edited files.
//
//     class Upper final : public HeapService<TrackFilter> {
//         bool apply(TrackHandle*, const FileStats&, TrackInfo& info) override { ...; return true; }
//     };
//     tag_io->update_async(tracks, count, make_service<Upper>().get(), window, 0, done);
//
// The operations are called on the main thread. A filter is called by the host on a thread of its choice, one
// call at a time.
#pragma once

#include "host/api/abort_flag.h"
#include "host/api/completion.h"
#include "host/api/host_api.h"
#include "host/api/track.h"

namespace vantaro {

/// Edits the tags of one track of an update.
class TrackFilter : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{A5F0B0C7-3E7E-4C0A-9C57-6D40F8D1C3E9}");

    /// Edits `info` in place. Returns whether the track is to be written. Called once for every different
    /// track of the list, and for the first one of those that lead to the same file. An exception leaves the
    /// track unwritten and is reported with its text.
    virtual bool apply(TrackHandle* track, const FileStats& stats, TrackInfo& info) = 0;

protected:
    ~TrackFilter() = default;
};

/// Is told which tracks' held tags have changed, on the main thread.
class TagChangeListener {
public:
    /// The tracks are sorted by address, without duplicates, and borrowed for the call.
    virtual void tags_changed(TrackHandle* const* tracks, std::size_t count) = 0;

protected:
    ~TagChangeListener() = default;
};

class HostTagIO : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{64D18B80-5E97-40E4-A30C-A4640C60BCE5}");

    /// Hands the tracks at a location (a file, a folder, a playlist) to `out`, in their order.
    /// Throws: vantaro_io::exception_io, vantaro_io::exception_aborted.
    virtual void resolve_location(const char* location, TrackSink& out, AbortFlag& abort) = 0;
    /// From now until it is removed the listener is told of changes. It is not owned.
    virtual void add_change_listener(TagChangeListener* listener) = 0;
    virtual void remove_change_listener(TagChangeListener* listener) = 0;

protected:
    ~HostTagIO() = default;
};

/// The notify of an update whose caller tells people what has become of it.
class UpdateNotify : public CompletionNotify {
public:
    using Inherits = CompletionNotify;
    static constexpr Guid class_guid = guid("{8476B102-BF1C-43D6-8F80-BDD4E2E28CCD}");

    /// Called once before the call of notify(), by hosts that have something to say: one or a few sentences
    /// in one line, UTF-8, borrowed for the call.
    virtual void summarise(const char* text) = 0;
    /// What the update does, for the list of runs: a few words. Called while the update is being started.
    virtual void get_activity(TextSink& out) = 0;

protected:
    ~UpdateNotify() = default;
};

/// What a finished update reports to its CompletionNotify.
namespace update_result {
inline constexpr std::uint32_t completed = 0;
inline constexpr std::uint32_t aborted = 1;
inline constexpr std::uint32_t completed_with_errors = 2;
} // namespace update_result

/// The extension that updates tags; every HostTagIO of this host answers for it.
class HostTagIOUpdate : public HostTagIO {
public:
    using Inherits = HostTagIO;
    static constexpr Guid class_guid = guid("{265C4ECE-FFB2-4299-91B5-6CA6603DA153}");

    /// Starts reading the tracks' tags, calling the filter, and writing the tags that came out different.
    /// Returns at once; the host holds references to the tracks, the filter and the notify meanwhile, shows
    /// progress, names the files that failed, and calls the notify (which may be nullptr) with an
    /// update_result at the end; one that is an UpdateNotify may be told more. `parent` owns the host's
    /// progress window. `flags`: option bits of the caller; bit 3 (value 8) marks an update that its caller
    /// watches by the notify.
    virtual void update_async(TrackHandle* const* tracks, std::size_t count, TrackFilter* filter,
                              WindowHandle parent, std::uint32_t flags, CompletionNotify* notify) = 0;

protected:
    ~HostTagIOUpdate() = default;
};

} // namespace vantaro
