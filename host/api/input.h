// Reading tags straight from a file, past what the host holds.
//
//     Ref<InputInfoReader> reader = input_entry::g_open_for_info_read(path, abort);   // host/input_access.h
//     reader->get_info(subsong, info, abort);
//
// Any thread; a reader is used by one thread at a time.
#pragma once

#include "host/api/abort_flag.h"
#include "host/api/filesystem.h"
#include "host/api/track.h"

namespace vantaro {

class InputInfoReader : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{D4A7F3B2-6C1E-4D59-8F0A-2B5E9C7D1A46}");

    /// Throws: exceptions of vantaro_io, as the next operation does.
    virtual FileStats get_file_stats(AbortFlag& abort) = 0;
    /// Replaces the content of `info` by the tags of one track of the file.
    virtual void get_info(std::uint32_t subsong, TrackInfo& info, AbortFlag& abort) = 0;

protected:
    ~InputInfoReader() = default;
};

class InputEntry : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{B8E1C5D9-0F72-4A36-9C84-E7D2A6B3F501}");

    /// Whether files of that name are its to read.
    virtual bool reads(const char* path) = 0;
    /// Returns a reader with one reference for the caller. `file_hint`: the file, opened already, or nullptr.
    /// Throws: exceptions of vantaro_io.
    virtual InputInfoReader* open_for_info_read(File* file_hint, const char* path, AbortFlag& abort) = 0;

protected:
    ~InputEntry() = default;
};

} // namespace vantaro
