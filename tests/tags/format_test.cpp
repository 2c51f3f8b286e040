#include "vantaro/tags/formats.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/tag_file.h"
#include "vantaro/tags/tag_kinds.h"

#include <gtest/gtest.h>

namespace vantaro::core::tags {
namespace {

using namespace std::string_literals;

struct Row {
    const char* name;
    std::string bytes; ///< the shortest beginning that tells
    std::string_view format;
};

class Beginnings : public testing::TestWithParam<Row> {};

std::string_view name_of_format(FileBytes& file) {
    try {
        const Format* format = find_format(file, 0);
        return format == nullptr ? "" : format->name;
    } catch (const vantaro_io::exception_io_data&) { // a page of Ogg that is cut off
        return "";
    }
}

TEST_P(Beginnings, TellFromTheirLastByteOn) {
    const auto& [name, bytes, format] = GetParam();
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        const MemorySource source("x", bytes.substr(0, size));
        FileBytes file(source);
        EXPECT_EQ(name_of_format(file), size < bytes.size() ? "" : format) << size;
        // A stump is no audio file, whatever it begins with.
        TrackInfoRecord info;
        EXPECT_THROW(read_tags(source, info), vantaro_io::exception_io) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Tags, Beginnings,
    testing::Values(Row{"Wav", "RIFF\x10\0\0\0WAVE"s, "WAV"},
                    Row{"Aiff",
                        "FORM\0\0\0\x10"
                        "AIFF"s,
                        "AIFF"},
                    Row{"AiffCompressed",
                        "FORM\0\0\0\x10"
                        "AIFC"s,
                        "AIFF"},
                    Row{"Rf64", "RF64\xFF\xFF\xFF\xFFWAVE"s, "RF64"},
                    Row{"Bw64", "BW64\xFF\xFF\xFF\xFFWAVE"s, "RF64"}, Row{"Dsdiff", "FRM8"s, "DSDIFF"},
                    Row{"Dsf", "DSD "s, "DSF"}, Row{"Caf", "caff"s, "CAF"}, Row{"Flac", "fLaC"s, "FLAC"},
                    Row{"WavPack", "wvpk"s, "WavPack"},
                    Row{"Mp4",
                        "\0\0\0\x20"
                        "ftyp"s,
                        "MP4"},
                    Row{"Opus", "OggS\0\2"s + std::string(20, '\0') + "\x01\x08OpusHead", "Opus"},
                    Row{"Matroska", "\x1A\x45\xDF\xA3"s, "Matroska"}, Row{"Mpeg", "\xFF\xFB"s, "MP3"}),
    [](const auto& row) { return row.param.name; });

TEST(Formats, CanBeOpenedAndGivenATag) {
    for (const Format& format : all_formats()) {
        EXPECT_NE(format.open, nullptr) << format.name;
        EXPECT_NE(find_kind(format.customary_tag), nullptr) << format.name;
    }
}

} // namespace
} // namespace vantaro::core::tags
