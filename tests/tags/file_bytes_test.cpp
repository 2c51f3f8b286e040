// Looking at a file, and the edit that comes of replacing parts of it.
#include "vantaro/tags/file_bytes.h"

#include "host/api/exceptions.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>

namespace vantaro::core::tags {
namespace {

/// Remembers what was read of it.
class WatchedSource final : public ByteSource {
public:
    explicit WatchedSource(std::string bytes) : memory_("x.flac", std::move(bytes)) {}

    const std::string& path() const override { return memory_.path(); }
    std::uint64_t size() const override { return memory_.size() + missing; }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const override {
        ++looks;
        read_bytes += size;
        return memory_.read(offset, buffer, size);
    }
    const std::string& bytes() const { return memory_.bytes(); }

    std::size_t missing = 0; ///< what the file has become shorter by
    mutable int looks = 0;
    mutable std::size_t read_bytes = 0;

private:
    MemorySource memory_;
};

std::string counting_bytes(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

TEST(FileBytes, LooksOnceAtTheBeginningAndOnceAtTheEnd) {
    const WatchedSource source(counting_bytes(10 << 20));
    FileBytes file(source);
    for (const std::size_t start : {0U, 10U, 5000U, 70000U})
        EXPECT_EQ(file.bytes(start, 100), source.bytes().substr(start, 100));
    const std::size_t end = source.bytes().size();
    for (const std::size_t back : {128U, 160U, 4000U, 128U})
        EXPECT_EQ(file.bytes(end - back, back), source.bytes().substr(end - back));
    EXPECT_EQ(source.looks, 2);
    EXPECT_LT(source.read_bytes, 100'000U);

    const Part picture(file, 100'000, 5 << 20);
    EXPECT_EQ(picture.head(4), source.bytes().substr(100'000, 4));
    EXPECT_LT(source.read_bytes, 110'000U);
    EXPECT_EQ(picture.bytes(), source.bytes().substr(100'000, 5 << 20));
}

TEST(FileBytes, EarlierViewsStayValid) {
    const WatchedSource source(counting_bytes(1 << 20));
    FileBytes file(source);
    std::vector<std::pair<std::size_t, std::string_view>> views;
    std::mt19937 engine(3);
    for (int i = 0; i < 300; ++i) {
        const std::size_t start = engine() % source.bytes().size();
        views.emplace_back(start, file.some(start, engine() % 9000));
    }
    for (const auto& [start, view] : views)
        EXPECT_EQ(view, source.bytes().substr(start, view.size()));
}

TEST(FileBytes, WhatIsNotThereIsNotInvented) {
    WatchedSource source("short");
    {
        FileBytes file(source);
        EXPECT_EQ(file.some(3, 10), "rt");
        EXPECT_EQ(file.some(5, 10), "");
        EXPECT_EQ(file.some(std::size_t(-1), 10), "");
        EXPECT_THROW(file.bytes(3, 3), vantaro_io::exception_io_data);
        EXPECT_THROW(file.bytes(2, std::size_t(-1)), vantaro_io::exception_io_data);
    }
    source.missing = 4;
    FileBytes file(source);
    EXPECT_THROW(file.some(0, 2), vantaro_io::exception_io);
}

TEST(FileBytes, SaysWhatWasLookedAtAndNoMore) {
    const WatchedSource source(counting_bytes(1 << 20));
    FileBytes file(source);
    file.bytes(100, 10);
    file.bytes(105, 20);
    file.bytes(0, 4);
    file.note_tag(500'000, 1000);
    EXPECT_EQ(file.looked_at(), (std::vector<Extent>{{0, 4}, {100, 25}, {500'000, 1000}}));
}

TEST(Rewriting, LeavesAloneWhatStandsWhereItStood) {
    const WatchedSource source(counting_bytes(1 << 20));
    const std::string& bytes = source.bytes();
    FileBytes file(source);
    const auto part = [&](std::size_t start, std::size_t size) { return Part(file, start, size); };
    struct Row {
        const char* name;
        std::vector<Part> parts; ///< in the place of the 500,000 bytes at 1,000
        std::string expected;
        std::size_t most_read;
    };
    const std::string inserted = "inserted";
    const Row rows[] = {
        {"the same", {part(1000, 500'000)}, bytes, 0},
        {"in two parts", {part(1000, 300'000), part(301'000, 200'000)}, bytes, 0},
        {"the head is another one",
         {Part(std::string(100, 'x')), part(1100, 499'900)},
         bytes.substr(0, 1000) + std::string(100, 'x') + bytes.substr(1100),
         100'000},
        {"moved by what is inserted",
         {Part(inserted), part(1000, 499'992)},
         bytes.substr(0, 1000) + inserted + bytes.substr(1000, 499'992) + bytes.substr(501'000),
         2'000'000},
        {"longer",
         {part(1000, 500'000), Part(inserted)},
         bytes.substr(0, 501'000) + inserted + bytes.substr(501'000),
         100'000},
        {"shorter", {part(1000, 400'000)}, bytes.substr(0, 401'000) + bytes.substr(501'000), 300'000},
        {"gone", {}, bytes.substr(0, 1000) + bytes.substr(501'000), 1'100'000},
        {"exchanged",
         {part(301'000, 200'000), part(1000, 300'000)},
         bytes.substr(0, 1000) + bytes.substr(301'000, 200'000) + bytes.substr(1000, 300'000)
             + bytes.substr(501'000),
         2'000'000},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::size_t before = source.read_bytes;
        Rewriting rewriting(file);
        rewriting.replace(1000, 500'000, row.parts);
        const FileEdit edit = rewriting.finish();
        EXPECT_EQ(edited_bytes(edit, bytes), row.expected);
        EXPECT_EQ(edit.new_size(), row.expected.size());
        EXPECT_LE(source.read_bytes - before, row.most_read);
    }
}

TEST(Rewriting, TakesReplacementsInAnyOrderAndDropsRepetitions) {
    const MemorySource source("x", "0123456789" + std::string(100, '.'));
    FileBytes file(source);
    Rewriting rewriting(file);
    rewriting.replace(7, 2, std::string("7X"));
    rewriting.replace(2, 0, std::string("new"));
    rewriting.replace(3, 2, std::string("34"));
    const FileEdit edit = rewriting.finish();
    EXPECT_EQ(edit.splices, (std::vector<Splice>{{2, 0, "new"}, {8, 1, "X"}}));
    EXPECT_EQ(edited_bytes(edit, source.bytes()).substr(0, 13), "01new234567X9");
}

} // namespace
} // namespace vantaro::core::tags
