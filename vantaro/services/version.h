// What the host tells of itself: its version, and the code page that it takes old texts to be in. Any thread.
#pragma once

#include "host/api/system.h"

namespace vantaro::core {

inline constexpr const char* host_version = "1.0";

class VersionService final : public StaticService<HostVersion> {
public:
    void get_version_text(TextSink& out) override { set_text(out, host_version); }
};

class CodePageService final : public StaticService<LegacyCodePage> {
public:
    explicit CodePageService(std::string name) : name_(std::move(name)) {}
    void get_name(TextSink& out) override { set_text(out, name_); }

private:
    const std::string name_;
};

} // namespace vantaro::core
