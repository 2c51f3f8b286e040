// ASF headers that no usual program writes: damaged ones, and those that have more than fields.
#include "host/api/exceptions.h"
#include "vantaro/tags/asf/asf_header.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/tag_file.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vantaro::core::tags {
namespace {

using namespace std::string_literals;

const std::string header_guid = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"s;
const std::string properties_guid = "\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4\x00\xC0\x0C\x20\x53\x65"s;
const std::string stream_guid = "\x91\x07\xDC\xB7\xB7\xA9\xCF\x11\x8E\xE6\x00\xC0\x0C\x20\x53\x65"s;
const std::string codecs_guid = "\x40\x52\xD1\x86\x1D\x31\xD0\x11\xA3\xA4\x00\xA0\xC9\x03\x48\xF6"s;
const std::string content_guid = "\x33\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"s;
const std::string extended_guid = "\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0\x00\xA0\xC9\x5E\xA8\x50"s;
const std::string extension_guid = "\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65"s;
const std::string library_guid = "\x94\x1C\x23\x44\x98\x94\xD1\x49\xA1\x41\x1D\x13\x4E\x45\x70\x54"s;
const std::string audio_guid = "\x40\x9E\x69\xF8\x4D\x5B\xCF\x11\xA8\xFD\x00\x80\x5F\x5C\x44\x2B"s;
const std::string unknown_guid(16, 'u');

std::string number(std::uint64_t value, std::size_t size) {
    return little_endian_bytes(value, size);
}
std::string object(const std::string& guid, const std::string& content) {
    return guid + number(24 + content.size(), 8) + content;
}
std::string object_of_size(std::uint64_t size) {
    return unknown_guid + number(size, 8) + std::string(40, 'x');
}
std::string extension(const std::string& objects, std::size_t inner_size) {
    return object(extension_guid, std::string(18, 'r') + number(inner_size, 4) + objects);
}
std::string extension(const std::string& objects) {
    return extension(objects, objects.size());
}
/// Of an extended description.
std::string attribute(const std::string& name, unsigned type, const std::string& value) {
    const std::string text = to_asf_text(name);
    return number(text.size(), 2) + text + number(type, 2) + number(value.size(), 2) + value;
}
/// Of a metadata library.
std::string attribute(const std::string& name, unsigned type, const std::string& value, unsigned language,
                      unsigned stream) {
    const std::string text = to_asf_text(name);
    return number(language, 2) + number(stream, 2) + number(text.size(), 2) + number(type, 2)
           + number(value.size(), 4) + text + value;
}
std::string header(const std::vector<std::string>& objects, const std::string& rest = {}) {
    std::string content;
    for (const std::string& each : objects)
        content += each;
    content += rest;
    return header_guid + number(30 + content.size(), 8) + number(objects.size(), 4) + "\1\2" + content;
}

std::string with(std::string bytes, std::size_t at, const std::string& others) {
    return bytes.replace(at, others.size(), others);
}

/// Zeros behind a beginning.
class HollowFile final : public ByteSource {
public:
    HollowFile(std::string beginning, std::uint64_t size) : beginning_(std::move(beginning)), size_(size) {}

    const std::string& path() const override { return path_; }
    std::uint64_t size() const override { return size_; }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const override {
        std::fill_n(buffer, size, '\0');
        if (offset < beginning_.size())
            beginning_.copy(buffer, size, offset);
        return size;
    }

private:
    std::string path_ = "x.wma";
    std::string beginning_;
    std::uint64_t size_;
};

std::string failure_of_editing(const ByteSource& file, const FieldChange& change) {
    try {
        write_tags(file, std::vector{change});
    } catch (const vantaro_io::exception_io& error) {
        return error.what();
    }
    return "none";
}

struct Damage {
    const char* name;
    std::string bytes;
    std::uint64_t file_size; ///< 0 stands for that of the bytes
    const char* reason;
};

class DamagedHeaders : public testing::TestWithParam<Damage> {};

TEST_P(DamagedHeaders, AreRefusedWithTheReason) {
    const auto& [name, bytes, size, reason] = GetParam();
    const HollowFile file(bytes, size == 0 ? bytes.size() : size);
    TrackInfoRecord info;
    try {
        read_tags(file, info);
        ADD_FAILURE() << "was read";
    } catch (const vantaro_io::exception_io_data& error) {
        EXPECT_STREQ(error.what(), reason);
    }
    EXPECT_EQ(failure_of_editing(file, {"TITLE", {"T"}}), reason);
}

const char* const larger_attribute = "The ASF header has an attribute that is larger than its list";

INSTANTIATE_TEST_SUITE_P(
    Tags, DamagedHeaders,
    testing::Values(
        Damage{"OtherContent", std::string(99, 'x'), 0, "The file is called ASF, but has no header of one"},
        Damage{"LargerThanTheFile", with(header({}), 16, number(31, 8)), 0,
               "The ASF header is larger than the file"},
        Damage{"LargestSize", with(header({}), 16, std::string(8, '\xFF')), 0,
               "The ASF header is larger than the file"},
        Damage{"SmallerThanItself", with(header({}), 16, number(29, 8)), 0,
               "The ASF header has a size that no header can have"},
        Damage{"HugeHeader", with(header({}), 16, number(1ULL << 32, 8)), 1ULL << 40,
               "The ASF header has a size that no header can have"},
        Damage{"SmallObject", header({object_of_size(23)}), 0,
               "The ASF header has an object that is smaller than its own head"},
        Damage{"LargeObject", header({object_of_size(65)}), 0,
               "The ASF header has an object that is larger than what holds it"},
        Damage{"LargestObject", header({object_of_size(~0ULL)}), 0,
               "The ASF header has an object that is larger than what holds it"},
        Damage{"LargeObjectInExtension", header({extension(object_of_size(65)), std::string(99, 'x')}), 0,
               "The ASF header has an object that is larger than what holds it"},
        Damage{"MostObjects", with(header({object_of_size(64)}), 24, number(0xFFFFFFFF, 4)), 0,
               "The ASF header has fewer objects than it says"},
        Damage{"ManyObjects", header(std::vector(4097, object(unknown_guid, ""))), 0,
               "The ASF header has more objects than any file needs"},
        Damage{"ManyAttributes",
               header(std::vector(2, object(extended_guid, number(40'000, 2) + std::string(240'000, '\0')))),
               0, "The ASF header has more attributes than any file needs"},
        Damage{"CountOfAttributes", header({object(extended_guid, "\xFF\xFF" + attribute("A", 0, "xx"))}), 0,
               larger_attribute},
        Damage{"CountInLibrary",
               header({extension(object(library_guid, "\xFF\xFF" + attribute("A", 0, "xx", 0, 0)))}), 0,
               larger_attribute},
        Damage{"LargeContent", header({object(content_guid, std::string(9, '\0') + '\1')}), 0,
               larger_attribute},
        Damage{"SmallExtension", header({object(extension_guid, std::string(21, 'x'))}), 0,
               "The ASF header extension has another size than its object"},
        Damage{"SmallerSizeOfExtension", header({extension(object_of_size(64), 63)}), 0,
               "The ASF header extension has another size than its object"},
        Damage{"LargestSizeOfExtension", header({extension("", 0xFFFFFFFF)}), 0,
               "The ASF header extension has another size than its object"}),
    [](const auto& row) { return row.param.name; });

std::string stream_properties(unsigned codec) {
    return object(stream_guid, audio_guid + std::string(38, '\0') + number(codec, 2) + number(2, 2)
                                   + number(48'000, 4) + number(100'060, 4) + number(4, 2) + number(24, 2)
                                   + number(0, 2));
}

/// A play duration of 7.25 s, of which 3 s are preroll.
std::string file_properties(std::uint64_t file_size) {
    return object(properties_guid, std::string(16, 'f') + number(file_size, 8) + std::string(16, '\0')
                                       + number(72'500'000, 8) + std::string(8, '\0') + number(3000, 8)
                                       + std::string(16, '\0'));
}

std::string codec_list() {
    const auto codec = [](unsigned type, const std::string& name) {
        const std::string text = to_asf_text(name);
        return number(type, 2) + number(text.size() / 2, 2) + text + number(1, 2) + "d\0"s + number(3, 2)
               + "inf";
    };
    return object(codecs_guid,
                  std::string(16, 'c') + number(2, 4) + codec(1, "Video") + codec(2, " Audio 9 "));
}

std::string technical(const TrackInfoRecord& info) {
    std::string result;
    for (std::size_t i = 0; i < info.technical_count(); ++i)
        if (info.technical_name(i) != "tagtype"s)
            result += std::string(info.technical_name(i)) + "=" + info.technical_value(i) + " ";
    return result;
}

TEST(AsfAudio, IsToldAsFarAsItIsKnown) {
    const std::string known = "bitrate=800 samplerate=48000 channels=2 ";
    const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
        {{}, ""},
        {{object(stream_guid, std::string(80, 'v'))}, ""},
        {{object(stream_guid, audio_guid)}, ""},
        {{stream_properties(0x55)}, known},
        {{stream_properties(0x161), stream_properties(0x163)}, "codec=WMA encoding=lossy " + known},
        {{codec_list(), stream_properties(0x163)},
         "codec=WMA codec_profile=Audio 9 encoding=lossless " + known + "bitspersample=24 "},
        {{codec_list().substr(0, 16) + number(60, 8) + codec_list().substr(24, 36)}, ""},
    };
    for (const auto& [objects, wanted] : rows) {
        std::vector<std::string> all = objects;
        all.push_back(file_properties(0));
        const std::string bytes = header(all) + "data";
        TrackInfoRecord info;
        read_tags(MemorySource("x.wma", bytes), info);
        EXPECT_EQ(technical(info), wanted);
        EXPECT_DOUBLE_EQ(info.length(), 4.25);
        // Tags can be edited all the same.
        const FileEdit edit =
            write_tags(MemorySource("x.wma", bytes), std::vector<FieldChange>{{"ALBUM", {"A"}}}).edit;
        read_tags(MemorySource("x.wma", edited_bytes(edit, bytes)), info);
        EXPECT_NE(info.find_field("ALBUM"), no_field);
        EXPECT_EQ(technical(info), wanted);
    }
}

TEST(AsfFields, AreReadInTheOrderOfTheirLists) {
    const std::string title = to_asf_text("1");
    const std::string numbers = attribute("Yes", 2, number(1, 2), 0, 0)
                                + attribute("No", 2, number(0, 4), 0, 0)
                                + attribute("Large", 4, number(~0ULL, 8), 0, 0);
    const std::string bytes =
        header({extension(object(library_guid,
                                 number(4, 2) + attribute("Title", 0, to_asf_text("3"), 0, 0) + numbers)),
                object(extended_guid, number(2, 2) + attribute("TITLE", 0, to_asf_text("4"))
                                          + attribute("Title", 0, to_asf_text("2"))),
                object(content_guid, number(title.size(), 2) + number(0, 8) + title)});
    TrackInfoRecord info;
    read_tags(MemorySource("x.wma", bytes), info);
    const std::vector<TrackField> wanted{
        {"TITLE", {"1", "2", "3", "4"}}, {"LARGE", {"18446744073709551615"}}, {"YES", {"1"}}};
    EXPECT_TRUE(field_changes(info.fields(), wanted).empty()); // a Boolean of four bytes is none here
}

TEST(AsfEdits, KeepWhatTheyDoNotName) {
    const std::string picture = attribute("WM/Picture", 1, std::string(70'000, 'p'), 0, 0);
    const std::string guid = attribute("WM/Genre", 6, std::string(16, 'g'), 0, 0);
    const std::string half_name = number(3, 2) + "\0\xD8x"s + number(0, 2) + number(1, 2) + "x";
    const std::string binary = attribute("WM/AlbumTitle", 1, "bytes");
    const std::string wrong_number = attribute("WM/AlbumTitle", 3, "bytes");
    const std::string second_extension = extension(object(library_guid, number(0, 2)));
    const std::string rating = "r\0\0\0"s;
    const std::string content = number(0, 8) + number(rating.size(), 2) + rating + "behind";
    const std::string before =
        header({object(unknown_guid, "first"), object(content_guid, content),
                extension(object(unknown_guid, "inner")
                          + object(library_guid, number(4, 2) + picture + guid
                                                     + attribute("WM/Genre", 0, to_asf_text("Old"), 3, 0)
                                                     + attribute("WM/Mood", 0, to_asf_text("Old"), 0, 4)
                                                     + "after")
                          + "scrap"),
                object(extended_guid, number(3, 2) + half_name + binary + wrong_number + "after"),
                second_extension, file_properties(0)},
               "rest")
        + "data";
    const std::string bytes = with(before, before.find("ffff") + 16, number(before.size(), 8));
    const MemorySource file("x.wma", bytes);
    const std::vector<FieldChange> changes{{"TITLE", {"T"}},
                                           {"ALBUM", {"A", "B"}},
                                           {"GENRE", {"G", "H"}},
                                           {"MOOD", {"M"}},
                                           {"COMPILATION", {"1"}}};
    const std::string after = edited_bytes(write_tags(file, changes).edit, bytes);

    EXPECT_EQ(little_endian(after.substr(after.find("ffff") + 16, 8)), after.size());
    EXPECT_TRUE(after.ends_with("restdata"));
    const std::string text = to_asf_text("T");
    for (const std::string& kept : {
             object(unknown_guid, "first"),
             object(content_guid, number(text.size(), 2) + number(0, 6) + number(rating.size(), 2) + text
                                      + rating + "behind"),
             object(unknown_guid, "inner"),
             second_extension,
             number(7, 2) + picture + guid + attribute("WM/AlbumTitle", 0, to_asf_text("A"), 0, 0)
                 + attribute("WM/AlbumTitle", 0, to_asf_text("B"), 0, 0)
                 + attribute("WM/Genre", 0, to_asf_text("G"), 3, 0)
                 + attribute("WM/Genre", 0, to_asf_text("H"), 0, 0)
                 + attribute("WM/Mood", 0, to_asf_text("M"), 0, 4) + "afterscrap",
             object(extended_guid, number(4, 2) + half_name + binary + wrong_number
                                       + attribute("WM/IsCompilation", 2, number(1, 4)) + "after"),
         })
        EXPECT_NE(after.find(kept), after.npos) << kept.size();

    // What is no Boolean becomes text.
    const std::string third = edited_bytes(
        write_tags(MemorySource("x.wma", after), std::vector<FieldChange>{{"COMPILATION", {"2"}}}).edit,
        after);
    EXPECT_NE(third.find(attribute("WM/IsCompilation", 0, to_asf_text("2"))), third.npos);
}

TEST(AsfEdits, AreRefusedWhereTheFileCouldNotBeReadAgain) {
    const std::string full = header({object(extended_guid, "\xFF\xFF" + std::string(6 * 0xFFFF, '\0'))});
    const std::string crowded = header(std::vector(4095, object(unknown_guid, "")));
    std::string objects;
    for (int i = 0; i < 4094; ++i)
        objects += object(unknown_guid, "");
    const std::string crowded_extension = header({extension(objects)});
    for (const std::string& bytes : {full, crowded, crowded_extension})
        EXPECT_EQ(failure_of_editing(MemorySource("x.wma", bytes), {"ALBUM", {"A"}}),
                  "The tags are larger than an ASF file can hold");
    EXPECT_NE(failure_of_editing(MemorySource("x.wma", header({})), {std::string(32'767, 'N'), {"A"}})
                  .find("the name is too long"),
              std::string::npos);
    EXPECT_EQ(failure_of_editing(MemorySource("x.wma", header({})), {std::string(32'766, 'N'), {"A"}}),
              "none");
}

} // namespace
} // namespace vantaro::core::tags
