// How little is read of tags that hold large pictures.
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/tag_file.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vantaro::core {
namespace {

using namespace std::string_literals;
using tags::big_endian_bytes;

constexpr std::size_t picture_size = 5'000'000;
constexpr std::size_t little = 200'000;

class CountingFile final : public ByteSource {
public:
    explicit CountingFile(std::string bytes) : file_("x.mp3", std::move(bytes)) {}

    const std::string& path() const override { return file_.path(); }
    std::uint64_t size() const override { return file_.size(); }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const override {
        read_ += size;
        return file_.read(offset, buffer, size);
    }

    std::size_t bytes_read() const { return read_; }
    const std::string& bytes() const { return file_.bytes(); }

private:
    MemorySource file_;
    mutable std::size_t read_ = 0;
};

std::string synchsafe(std::size_t value) {
    return {static_cast<char>(value >> 21 & 0x7F), static_cast<char>(value >> 14 & 0x7F),
            static_cast<char>(value >> 7 & 0x7F), static_cast<char>(value & 0x7F)};
}

std::string frame(int version, const std::string& name, const std::string& body) {
    if (version == 2)
        return name + big_endian_bytes(body.size(), 3) + body;
    return name + (version == 3 ? big_endian_bytes(body.size(), 4) : synchsafe(body.size())) + "\0\0"s + body;
}

/// A title, a picture, an album, padding, and some frames of MPEG audio.
std::string file_with_picture(int version) {
    const bool is_old = version == 2;
    const std::string body =
        frame(version, is_old ? "TT2" : "TIT2", "\0Title"s)
        + frame(version, is_old ? "PIC" : "APIC",
                (is_old ? "\0PNG\3\0"s : "\0image/png\0\3\0"s) + std::string(picture_size, 'p'))
        + frame(version, is_old ? "TAL" : "TALB", "\0Album"s) + std::string(2000, '\0');
    std::string bytes = "ID3"s + static_cast<char>(version) + "\0\0"s + synchsafe(body.size()) + body;
    for (int i = 0; i < 100; ++i)
        bytes += "\xFF\xFB\x90\x64"s + std::string(413, '\0');
    return bytes;
}

TEST(LargeFrames, AreNotReadForTheFields) {
    for (const int version : {2, 3, 4}) {
        const CountingFile file(file_with_picture(version));
        TrackInfoRecord info;
        read_tags(file, info);
        EXPECT_EQ(info.fields(), (std::vector<TrackField>{{"TITLE", {"Title"}}, {"ALBUM", {"Album"}}}))
            << version;
        EXPECT_LT(file.bytes_read(), little) << version;
    }
}

TEST(LargeFrames, StayWhereTheyStand) {
    for (const int version : {3, 4})
        for (const char* field : {"ALBUM", "TITLE"}) {
            const CountingFile file(file_with_picture(version));
            // As long as before, in front of the picture; longer, behind it.
            const std::string value = field == "TITLE"s ? "Other" : "A longer name";
            const std::vector<FieldChange> changes{{field, {value}}};
            const FileEdit edit = write_tags(file, changes).edit;
            EXPECT_LT(file.bytes_read(), little) << version << field;
            std::size_t written = 0;
            for (const Splice& splice : edit.splices)
                written += splice.bytes.size();
            EXPECT_LT(written, 4000) << version << field;
            TrackInfoRecord info;
            const CountingFile edited(edited_bytes(edit, file.bytes()));
            EXPECT_EQ(edited.size(), file.size());
            read_tags(edited, info);
            EXPECT_STREQ(info.value(info.find_field(field), 0), value.c_str());
            EXPECT_NE(edited.bytes().find(std::string(picture_size, 'p')), std::string::npos);
        }
}

} // namespace
} // namespace vantaro::core
