// Small services of the host: digest, clock, main-thread calls, code page, version.
//
//     Guid key = digest->digest(text.data(), text.size());
//     queue->post(make_service<Redraw>(row).get());
#pragma once

#include "host/api/service.h"
#include "host/api/text_sink.h"

namespace vantaro {

/// One digest computation. Used by one thread.
class DigestState : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{E7B0D6F4-92A3-4C1D-8E65-5A1F3C9B7D20}");

    virtual void process(const void* data, std::size_t length) = 0;
    /// The MD5 of all bytes processed (RFC 1321). Ends the computation.
    virtual Guid result() = 0;

protected:
    ~DigestState() = default;
};

/// 16-byte digests. Any thread.
class DigestService : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{4B897EC8-A2F9-478D-A95E-1A2110A40078}");

    /// Returns a fresh computation with one reference for the caller.
    virtual DigestState* initialise() = 0;
    /// The digest of one run of bytes.
    virtual Guid digest(const void* data, std::size_t length) = 0;

protected:
    ~DigestService() = default;
};

/// Receives the time.
class ClockCallback : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{3F8A1D5C-7E94-4B06-9D2F-C0B6E4A7F813}");

    /// `time` counts units of 100 ns since 1601-01-01 UTC.
    virtual void on_time(std::uint64_t time) = 0;

protected:
    ~ClockCallback() = default;
};

/// Calls back at intervals. Registering may be done on any thread; calls come on the main thread.
class ClockService : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{86D3B9F0-2C4E-47A1-B5D8-0E9A7F1C6B54}");

    /// Calls the callback every `period` units of 100 ns until it is unregistered. Holds no reference: who
    /// registers unregisters before the object ends.
    virtual void register_callback(ClockCallback* callback, std::uint64_t period) = 0;
    virtual void unregister_callback(ClockCallback* callback) = 0;

protected:
    ~ClockService() = default;
};

/// Something to do on the main thread.
class MainThreadCall : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{F09C4E72-B6A1-4D3E-85C7-1B7D5A2E9F68}");

    virtual void run() = 0;

protected:
    ~MainThreadCall() = default;
};

/// Runs calls on the main thread, in the order in which they were posted. Any thread may post.
class MainThreadQueue : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{1D6F8B3A-E5C2-4097-A84B-9F2C7D0E5B16}");

    /// Returns at once, on the main thread too. Holds a reference until the call has run.
    virtual void post(MainThreadCall* call) = 0;

protected:
    ~MainThreadQueue() = default;
};

/// Tells how texts in files that say nothing of it are encoded. Any thread.
class LegacyCodePage : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{52B7E4D1-0C96-4F3A-9E18-D7A2C5F8B360}");

    /// Sets a name of the IANA registry of character sets ("windows-1252").
    virtual void get_name(TextSink& out) = 0;

protected:
    ~LegacyCodePage() = default;
};

/// Tells the host's version.
class HostVersion : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{6E2A0C9D-4B7F-4E18-93D5-A8C1F6B0E742}");

    virtual void get_version_text(TextSink& out) = 0;

protected:
    ~HostVersion() = default;
};

} // namespace vantaro
