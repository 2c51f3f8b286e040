// CompletionNotify: how a caller learns that something it started has ended. The settings dialogs of actions
// and the asynchronous tag update both report through it.
//
//     class Done final : public HeapService<CompletionNotify> {
//         void notify(std::uint32_t code) override { ... }
//     };
//     tag_io->update_async(tracks, count, filter, window, 0, make_service<Done>().get());
//
// Called on the host's main thread.
#pragma once

#include "host/api/service.h"

namespace vantaro {

class CompletionNotify : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{DF26D586-F7EC-40C3-9FE8-2EA0725D76C0}");

    /// What a code means is said by the operation that was handed the object.
    virtual void notify(std::uint32_t code) = 0;

protected:
    ~CompletionNotify() = default;
};

/// A notify for callers who do not care.
class IgnoreCompletion final : public HeapService<CompletionNotify> {
public:
    void notify(std::uint32_t) override {}
};

} // namespace vantaro
