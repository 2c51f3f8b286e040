// How far files are read, and those that are none.
#include "host/api/exceptions.h"
#include "vantaro/tags/tag_file.h"

#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <fstream>

// TagLib gives nothing back when a stream throws, as one does when the end of the file is not taken for one.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libtag.so";
}

namespace vantaro::core {
namespace {

using namespace std::string_literals;

constexpr long megabyte = 1L << 20;

class Flag final : public AbortFlag {
public:
    bool is_aborting() const noexcept override { return is_set; }
    int wait_handle() const noexcept override { return -1; }

    bool is_set = false;
};

/// Zeros behind a beginning, and hardly an end.
class LongFile final : public ByteSource {
public:
    LongFile(std::string path, std::string beginning)
        : path_(std::move(path)), beginning_(std::move(beginning)) {}

    const std::string& path() const override { return path_; }
    std::uint64_t size() const override { return std::uint64_t{1} << 44; }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const override {
        std::fill_n(buffer, size, '\0');
        if (offset < beginning_.size())
            beginning_.copy(buffer, size, offset);
        read_ += static_cast<long>(size);
        ++looks_;
        if (flag != nullptr && read_ >= megabyte)
            flag->is_set = true;
        return size;
    }

    long bytes_read() const { return read_; }
    long looks() const { return looks_; }

    Flag* flag = nullptr; ///< set after a megabyte

private:
    std::string path_;
    std::string beginning_;
    mutable long read_ = 0;
    mutable long looks_ = 0;
};

struct Row {
    const char* name;
    const char* extension;
    std::string beginning;
};

// Two frames of MPEG audio.
std::string two_frames() {
    std::string frame = "\xFF\xFB\x90\x64"s;
    frame.resize(417);
    return frame + frame;
}

class LongFiles : public testing::TestWithParam<Row> {};

TEST_P(LongFiles, AreNotSearchedToTheEnd) {
    for (const bool writing : {false, true}) {
        LongFile file("x."s + GetParam().extension, GetParam().beginning);
        TrackInfoRecord info;
        const std::vector<FieldChange> changes{{"TITLE", {"T"}}};
        EXPECT_THROW(writing ? static_cast<void>(write_tags(file, changes)) : read_tags(file, info),
                     vantaro_io::exception_io_data);
        EXPECT_GT(file.bytes_read(), 8 * megabyte); // a large picture may be in the way
        EXPECT_LT(file.bytes_read(), 80 * megabyte);
        EXPECT_LT(file.looks(), 50'000);
    }
}

TEST_P(LongFiles, AreLeftWhenAborted) {
    for (const bool writing : {false, true}) {
        LongFile file("x."s + GetParam().extension, GetParam().beginning);
        Flag flag;
        file.flag = &flag;
        TrackInfoRecord info;
        info.set_length(7);
        const std::vector<FieldChange> changes{{"TITLE", {"T"}}};
        EXPECT_THROW(writing ? static_cast<void>(write_tags(file, changes, &flag))
                             : read_tags(file, info, &flag),
                     vantaro_io::exception_aborted);
        EXPECT_LT(file.bytes_read(), 2 * megabyte);
        EXPECT_EQ(info.length(), 7);
    }
}

INSTANTIATE_TEST_SUITE_P(Tags, LongFiles,
                         testing::Values(Row{"Mpeg", "mp3", ""}, Row{"Vorbis", "ogg", ""},
                                         Row{"Opus", "opus", ""}, Row{"Speex", "spx", ""},
                                         Row{"OggFlac", "oga", ""}, Row{"MonkeysAudio", "ape", ""}),
                         [](const auto& row) { return row.param.name; });

TEST(HollowFiles, AReservedEndIsNoPartOfTheLength) {
    LongFile file("x.mp3", two_frames());
    TrackInfoRecord info;
    read_tags(file, info);
    EXPECT_EQ(info.length(), 0);
    EXPECT_LT(file.bytes_read(), megabyte);
}

std::string fields_of_mpeg(const std::string& bytes) {
    TrackInfoRecord info;
    read_tags(MemorySource("x.mp3", bytes), info);
    std::string result;
    for (std::size_t i = 0; i < info.technical_count(); ++i)
        result += std::string(info.technical_name(i)) + '=' + info.technical_value(i) + ' ';
    return result + std::to_string(std::lround(info.length() * 1000));
}

TEST(MpegAudio, IsFoundWhereTwoFramesAgree) {
    const std::string lie = "\xFF\xFB\x90\x64 says something else";
    const std::string found = "codec=MP3 encoding=lossy bitrate=128 samplerate=44100 channels=2 52";
    EXPECT_EQ(fields_of_mpeg(two_frames()), found);
    EXPECT_EQ(fields_of_mpeg(std::string(200'000, 'x') + lie + two_frames()), found);
    // The pair stands across the blocks of the search.
    EXPECT_EQ(fields_of_mpeg(std::string(61'000, 'x') + two_frames()), found);
    EXPECT_THROW(fields_of_mpeg(lie + lie), vantaro_io::exception_io_data);
}

TEST(MpegAudio, MayBeMissingBehindTags) {
    const std::string tag = "ID3\3\0\0\0\0\0\x0A"s + std::string(10, '\0');
    for (const std::size_t zeros : {0U, 5000U, 100'000U})
        EXPECT_EQ(fields_of_mpeg(tag + std::string(zeros, '\0')), "tagtype=ID3v2.3 0") << zeros;
    EXPECT_THROW(fields_of_mpeg(tag + "noise"), vantaro_io::exception_io_data);
    EXPECT_THROW(fields_of_mpeg(std::string(5000, '\0')), vantaro_io::exception_io_data);
}

// One block of a FLAC file, and empty ones after it for as long as there is file.
TEST(HollowFiles, ABlockThatCannotBeThereIsTheEnd) {
    LongFile file("x.flac", "fLaC\0\0\0\x22"s);
    TrackInfoRecord info;
    EXPECT_THROW(read_tags(file, info), vantaro_io::exception_io_data);
    EXPECT_LT(file.bytes_read(), megabyte);
}

std::exception_ptr failure_of_reading(const std::string& path) {
    TrackInfoRecord info;
    try {
        read_tags(path, info);
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

std::string text_of(const std::exception_ptr& failure) {
    try {
        if (failure)
            std::rethrow_exception(failure);
    } catch (const vantaro_io::exception_io& error) {
        return error.what();
    }
    return {};
}

std::string failure(const std::string& path) {
    return text_of(failure_of_reading(path));
}

TEST(ReadingFiles, WhatIsNoFileDoesNotKeepAnybodyWaiting) {
    const test::TemporaryFolder folder;
    const std::string pipe = folder.path("pipe.mp3");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string audio = folder.path("a.flac");
    std::ofstream(audio) << "fLaC";
    EXPECT_EQ(failure(pipe), "It is no regular file");
    EXPECT_EQ(failure("/dev/null"), "It is no regular file");
    EXPECT_EQ(failure(folder.path("absent.mp3")), vantaro_io::exception_io_not_found::default_text);
    EXPECT_EQ(failure(audio + '\0' + "b"), vantaro_io::exception_io_not_found::default_text);
    EXPECT_EQ(failure(folder.path("")), "Is a directory");
}

TEST(ReadingFiles, TooManyOpenFilesAreNoDenial) {
    const test::TemporaryFolder folder;
    const std::string audio = folder.path("a.flac");
    std::ofstream(audio) << "fLaC";
    // Sanitizers need descriptors for what they meet first, so they meet it here.
    EXPECT_EQ(text_of(failure_of_reading(folder.path())), "Is a directory");
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::exception_ptr failure = failure_of_reading(audio);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(text_of(failure), "Too many open files");
}

} // namespace
} // namespace vantaro::core
