// MD5 digests (RFC 1321), through Qt. Any thread.
#pragma once

#include "host/api/system.h"

namespace vantaro::core {

class Md5Service final : public StaticService<DigestService> {
public:
    DigestState* initialise() override;
    Guid digest(const void* data, std::size_t length) override;
};

} // namespace vantaro::core
