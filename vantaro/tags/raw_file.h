// The least that TagLib's tag classes need for reading from a stream.
#pragma once

#include <tfile.h>
#include <tiostream.h>

namespace vantaro::core::tags {

class RawFile final : public TagLib::File {
public:
    /// `stream` outlives this.
    explicit RawFile(TagLib::IOStream& stream) : TagLib::File(&stream) {}

    /// How many bytes TagLib reads at a time when it looks for something.
    static unsigned search_unit() { return bufferSize(); }

    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }
};

} // namespace vantaro::core::tags
