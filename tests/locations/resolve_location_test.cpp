#include "vantaro/locations/resolve_location.h"

#include "host/api/exceptions.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace vantaro::core {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Texts = std::vector<std::string>;

bool is_mp3(std::string_view path) {
    return path.ends_with(".mp3");
}

class ResolveLocation : public testing::Test {
protected:
    ResolvedLocation resolve(const std::string& location, const LocationLimits& limits = {}) {
        return resolve_location(
            location, is_mp3, [] { return false; }, limits);
    }
    /// Names below the test's folder as full paths.
    Texts full(Texts names) {
        for (std::string& name : names)
            name = folder_.path(name);
        return names;
    }

    test::TemporaryFolder folder_;
};

TEST_F(ResolveLocation, FolderInNaturalOrderFilesFirst) {
    for (const char* name : {"10.mp3", "2.mp3", "a.MP3", "cover.jpg", "x.m3u", "b/1.mp3", "B 2/\xE4.mp3",
                             "B 10/\xC3\xA4.mp3", "b/c/3.mp3", "b/2.mp3", "z.mp3"})
        folder_.write(name);
    folder_.make_folder("folder.mp3");
    ASSERT_EQ(::mkfifo(folder_.path("pipe.mp3").c_str(), 0600), 0);

    const Texts expected = full(
        {"2.mp3", "10.mp3", "z.mp3", "b/1.mp3", "b/2.mp3", "b/c/3.mp3", "B 2/\xE4.mp3", "B 10/\xC3\xA4.mp3"});
    for (const std::string& location : {folder_.path(), folder_.path() + "/",
                                        folder_.path() + "/b/.././/b/..", "file://" + folder_.path()}) {
        const ResolvedLocation found = resolve(location);
        EXPECT_EQ(found.paths, expected) << location;
        EXPECT_THAT(found.problems, IsEmpty()) << location;
    }
}

TEST_F(ResolveLocation, RelativeToTheCurrentFolder) {
    folder_.write("in/a.mp3");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    EXPECT_EQ(resolve("./in/../in").paths, full({"in/a.mp3"}));
    EXPECT_EQ(resolve("in/a.mp3").paths, full({"in/a.mp3"}));
    std::filesystem::current_path(before);
}

TEST_F(ResolveLocation, NamedFilesUnlessTheirExtensionIsOfNoMusic) {
    for (const char* name : {"no\xFF name.mp3", "01. Intro", "bare", ".hidden", "cover.jpg", "x.Nfo"})
        folder_.write(name);
    folder_.link("no\xFF name.mp3", "link");
    folder_.write("list.m3u", "cover.jpg\nbare\nx.Nfo\n");
    for (const char* name : {"no\xFF name.mp3", "01. Intro", "bare", ".hidden", "link"})
        EXPECT_EQ(resolve(folder_.path(name)).paths, full({name})) << "links stay in the path";
    EXPECT_EQ(resolve("file://" + folder_.path("no%ff%20name.mp3")).paths, full({"no\xFF name.mp3"}));
    const ResolvedLocation alone = resolve(folder_.path("cover.jpg"));
    EXPECT_THAT(alone.paths, IsEmpty());
    EXPECT_THAT(alone.problems, IsEmpty());
    EXPECT_EQ(passed_over_line(alone.passed_over),
              folder_.path("cover.jpg") + ": passed over, since it is no music file");
    const ResolvedLocation listed = resolve(folder_.path("list.m3u"));
    EXPECT_EQ(listed.paths, full({"bare"}));
    EXPECT_EQ(listed.passed_over, full({"cover.jpg", "x.Nfo"}));
    EXPECT_EQ(passed_over_line(listed.passed_over),
              folder_.path("cover.jpg") + " and 1 other file: passed over, since they are no music files");
    EXPECT_THAT(resolve(folder_.path()).passed_over, IsEmpty()) << "nobody has named them";
}

TEST_F(ResolveLocation, LinksAreFollowedAndLoopsEnd) {
    folder_.write("real/1.mp3");
    folder_.write("real/sub/2.mp3");
    folder_.link("..", "real/sub/up");
    folder_.link("real", "also");
    folder_.link("real/1.mp3", "one.mp3");
    folder_.link("nowhere", "dangling");
    folder_.link("self", "self");
    const ResolvedLocation found = resolve(folder_.path());
    EXPECT_EQ(found.paths, full({"one.mp3", "also/1.mp3", "also/sub/2.mp3"}));
    EXPECT_THAT(found.problems, testing::UnorderedElementsAre(StartsWith(folder_.path("dangling") + ": "),
                                                              StartsWith(folder_.path("self") + ": ")));
}

TEST_F(ResolveLocation, WhatMayNotBeReadIsReported) {
    folder_.write("open/a.mp3");
    folder_.write("open/closed/b.mp3");
    folder_.write("secret.mp3");
    folder_.write("list.m3u", "secret.mp3\nopen\nopen/closed");
    for (const char* name : {"open/closed", "secret.mp3"})
        folder_.set_mode(name, 0);
    for (const char* name : {"", "open"})
        folder_.set_mode(name, 0755);
    const test::OrdinaryUser user;
    EXPECT_THROW(resolve(folder_.path("open/closed")), vantaro_io::exception_io_denied);
    EXPECT_THROW(resolve(folder_.path("open/closed/b.mp3")), vantaro_io::exception_io_denied);
    EXPECT_THROW(resolve(folder_.path("secret.mp3")), vantaro_io::exception_io_denied);
    const ResolvedLocation found = resolve(folder_.path("list.m3u"));
    EXPECT_EQ(found.paths, full({"open/a.mp3"}));
    const std::string named = " (named by " + folder_.path("list.m3u") + ")";
    EXPECT_THAT(found.problems, ElementsAre(folder_.path("secret.mp3") + ": Access denied" + named,
                                            folder_.path("open/closed") + ": Access denied" + named));
}

TEST_F(ResolveLocation, LocationsThatAreNone) {
    folder_.write("file");
    folder_.link("nowhere", "dangling");
    ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    for (const std::string& missing : full({"none", "file/", "file/x", "dangling"}))
        EXPECT_THROW(resolve(missing), vantaro_io::exception_io_not_found) << missing;
    for (const std::string& invalid : {std::string(), std::string("a\0b", 3), std::string("http://a/b"),
                                       std::string("file://server/x"), folder_.path("pipe")})
        EXPECT_THROW(resolve(invalid), vantaro_io::exception_io_no_handler_for_path) << invalid;
    EXPECT_THROW(resolve(std::string(5000, 'x')), vantaro_io::exception_io);
}

TEST_F(ResolveLocation, EndsWhenAborted) {
    folder_.write("a/b/1.mp3");
    folder_.write("list.m3u", "a/b/1.mp3\na\n");
    for (const char* name : {"", "list.m3u"}) {
        int calls_left = 2;
        EXPECT_THROW(resolve_location(folder_.path(name), is_mp3, [&] { return calls_left-- == 0; }),
                     vantaro_io::exception_aborted)
            << name;
    }
}

TEST_F(ResolveLocation, PlaylistEntries) {
    folder_.write("p/a.mp3");
    folder_.write("p/sub/b.mp3");
    folder_.write("p/back\\slash");
    folder_.write("p/\xC3\xA4.mp3");
    folder_.write("p/\xF6");
    folder_.write("p/list.m3u",
                  "a.mp3\r\na.mp3\r\nsub\nsub\\b.mp3\nback\\slash\n\xE4.mp3\n\xF6\nsub\nmissing.mp3\n"
                  "http://radio/x\nmore.m3u8\n"
                      + folder_.path("p/a.mp3"));
    folder_.write("p/more.m3u8", "\xE4.mp3\ndisc.cue");
    folder_.write("p/disc.cue", "FILE \"\xE4.mp3\" MP3\nFILE \"gone.wav\" WAVE\n");
    const ResolvedLocation found = resolve(folder_.path("p/list.m3u"));
    EXPECT_EQ(found.paths, full({"p/a.mp3", "p/a.mp3", "p/sub/b.mp3", "p/sub/b.mp3", "p/back\\slash",
                                 "p/\xC3\xA4.mp3", "p/\xF6", "p/\xC3\xA4.mp3", "p/a.mp3"}));
    EXPECT_THAT(found.problems,
                ElementsAre(folder_.path("p/missing.mp3") + ": File not found (named by "
                                + folder_.path("p/list.m3u") + ")",
                            StartsWith("http://radio/x: Invalid path"),
                            StartsWith(folder_.path("p/\xE4.mp3: ")),
                            AllOf(StartsWith(folder_.path("p/gone.wav: ")), HasSubstr("p/disc.cue"))));
}

TEST_F(ResolveLocation, HostilePlaylistsEnd) {
    folder_.write("self.m3u", "self.m3u\na.mp3\n./x/../self.m3u\n");
    folder_.write("a.mp3");
    folder_.write("ring1.m3u", "ring2.m3u\na.mp3");
    folder_.write("ring2.m3u", "ring1.m3u\na.mp3");
    folder_.write("huge line.m3u",
                  std::string(1'000'000, 'x') + "\n" + std::string(1'000'000, '\xE4') + "\na.mp3");
    folder_.write("control.m3u", "a\x1B[2J\rb\na.mp3");
    folder_.write("nul.m3u", std::string("a.mp3\n\0", 7));
    folder_.write("holder.m3u", "nul.m3u\na.mp3");
    const struct {
        const char* name;
        Texts paths;
        std::size_t problems;
    } rows[] = {
        {"self.m3u", {"a.mp3"}, 2},    {"ring1.m3u", {"a.mp3", "a.mp3"}, 1}, {"huge line.m3u", {"a.mp3"}, 2},
        {"control.m3u", {"a.mp3"}, 1}, {"holder.m3u", {"a.mp3"}, 1},
    };
    for (const auto& row : rows) {
        const ResolvedLocation found = resolve(folder_.path(row.name));
        EXPECT_EQ(found.paths, full(row.paths)) << row.name;
        EXPECT_EQ(found.problems.size(), row.problems) << row.name;
        for (const std::string& problem : found.problems) {
            EXPECT_EQ(problem.find_first_of("\n\r\x1B"), std::string::npos) << problem;
            EXPECT_LT(problem.size(), 2000U) << row.name;
        }
    }
    EXPECT_THROW(resolve(folder_.path("nul.m3u")), vantaro_io::exception_io_data);
}

TEST_F(ResolveLocation, PlaylistsWithinLimits) {
    folder_.write("a.mp3");
    folder_.write("large.m3u", "a.mp3\n");
    std::filesystem::resize_file(folder_.path("large.m3u"), LocationLimits().playlist_size + 1);
    EXPECT_THROW(resolve(folder_.path("large.m3u")), vantaro_io::exception_io_data);

    folder_.write("0.m3u", "1.m3u\na.mp3");
    folder_.write("1.m3u", "2.m3u\na.mp3");
    folder_.write("2.m3u", "a.mp3");
    const ResolvedLocation deep = resolve(folder_.path("0.m3u"), {.playlist_depth = 1});
    EXPECT_EQ(deep.paths, full({"a.mp3", "a.mp3"}));
    EXPECT_THAT(deep.problems, ElementsAre(StartsWith(folder_.path("2.m3u"))));

    folder_.write("long.m3u", "a.mp3\nb.mp3\nc.mp3\na.mp3\na.mp3\n");
    const ResolvedLocation longer = resolve(folder_.path("long.m3u"), {.playlist_entries = 4, .problems = 1});
    EXPECT_EQ(longer.paths, full({"a.mp3", "a.mp3"}));
    EXPECT_THAT(longer.problems, ElementsAre(StartsWith(folder_.path("b.mp3: ")), EndsWith(": 2")));
}

} // namespace
} // namespace vantaro::core
