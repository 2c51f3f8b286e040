#include "vantaro/tags/format.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/tag_file.h"

#include <tbytevectorstream.h>

#include <gtest/gtest.h>

namespace vantaro::core::tags {
namespace {

using namespace std::string_literals;

struct Row {
    const char* name;
    std::string bytes; ///< the shortest beginning that tells
    Format format;
};

class Beginnings : public testing::TestWithParam<Row> {};

TEST_P(Beginnings, TellFromTheirLastByteOn) {
    const auto& [name, bytes, format] = GetParam();
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        TagLib::ByteVectorStream stream(TagLib::ByteVector(bytes.data(), static_cast<unsigned>(size)));
        EXPECT_EQ(find_format(stream, 0), size < bytes.size() ? std::nullopt : std::optional(format)) << size;
        // A stump is no audio file, whatever it begins with.
        TrackInfoRecord info;
        EXPECT_THROW(read_tags(stream, info), vantaro_io::exception_io) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Tags, Beginnings,
    testing::Values(Row{"Wav", "RIFF\x10\0\0\0WAVE"s, Format::wav},
                    Row{"Aiff",
                        "FORM\0\0\0\x10"
                        "AIFF"s,
                        Format::aiff},
                    Row{"AiffCompressed",
                        "FORM\0\0\0\x10"
                        "AIFC"s,
                        Format::aiff},
                    Row{"Flac", "fLaC"s, Format::flac}, Row{"WavPack", "wvpk"s, Format::wavpack},
                    Row{"Mp4",
                        "\0\0\0\x20"
                        "ftyp"s,
                        Format::mp4},
                    Row{"Opus", "OggS"s + std::string(24, '\0') + "OpusHead", Format::opus},
                    Row{"Mpeg", "\xFF\xFB"s, Format::mpeg}),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace vantaro::core::tags
