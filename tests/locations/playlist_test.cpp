#include "vantaro/locations/playlist.h"

#include "host/api/exceptions.h"

#include <gtest/gtest.h>

namespace vantaro::core {
namespace {

using Texts = std::vector<std::string>;

Texts entries_of(std::string_view path, std::string_view text) {
    Texts entries;
    visit_entries(*playlist_format(path), text, [&](std::string_view entry) {
        entries.emplace_back(entry);
        return true;
    });
    return entries;
}

TEST(Playlist, IsKnownByItsExtension) {
    for (const char* path : {"a.m3u", "/x.y/b.M3U8", ".pls", "c.d.Cue"})
        EXPECT_NE(playlist_format(path), nullptr) << path;
    for (const char* path : {"", "m3u", "a.m3u/b", "a.m3u9", "a.m3", "a.m3u8.mp3", "a.cue "})
        EXPECT_EQ(playlist_format(path), nullptr) << path;
}

TEST(Playlist, EntriesOfEveryFormat) {
    const struct {
        const char* path;
        std::string text;
        Texts entries;
    } rows[] = {
        {"x.m3u", "", {}},
        {"x.m3u",
         "\xEF\xBB\xBF#EXTM3U\r\n#EXTINF:1,T\r\na.mp3\r\n\r\n \t\nb b.mp3 \n/c",
         {"a.mp3", "b b.mp3 ", "/c"}},
        {"x.m3u", "a\na\n\r\n#b", {"a", "a"}},
        {"x.pls",
         "[playlist]\r\nFile1=a=b.mp3\r\nTitle1=File2=no\nfile02 = "
         "c.mp3\nFile=d\nFilex=no\nFileno\nLength1=3",
         {"a=b.mp3", "c.mp3", "d"}},
        {"x.cue",
         "\xEF\xBB\xBFPERFORMER \"FILE\"\r\n  FILE \"a b.wav\" WAVE\r\n TRACK 01 AUDIO\r\nFILE \"a b.wav\" "
         "WAVE\n"
         "FILE c d.wav WAVE\nfile\t\"e \"q\".wav\" MP3\nFILE \"a b.wav\" WAVE\nFILES x y\nREM FILE \"r\" "
         "WAVE\n",
         {"a b.wav", "c d.wav", "e \"q\".wav", "a b.wav"}},
        {"x.cue",
         "FILE\nFILE \nFILE \"\nFILE \"\" WAVE\nFILE \"open.wav\nFILE lone.wav",
         {"open.wav", "lone.wav"}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(entries_of(row.path, row.text), row.entries) << row.path << '\n' << row.text;
}

TEST(Playlist, GuessesWhatAnEntryMeans) {
    const struct {
        const char* playlist;
        const char* entry;
        Texts paths;
    } rows[] = {
        {"x.m3u", "a/../b.mp3", {"/p/b.mp3"}},
        {"x.m3u", "../b.mp3", {"/b.mp3"}},
        {"x.m3u", "/a\\b", {"/a\\b", "/a/b"}},
        {"x.m3u", "\xC3\xA4", {"/p/\xC3\xA4"}},
        {"x.m3u",
         "\x80\\\xE4",
         {"/p/\x80\\\xE4", "/p/\x80/\xE4", "/p/\xE2\x82\xAC\\\xC3\xA4", "/p/\xE2\x82\xAC/\xC3\xA4"}},
        {"x.m3u8", "\xE4", {"/p/\xE4"}},
        {"x.m3u8", "FILE:///a%20b%E4%2fc%zz%4", {"/a b\xE4/c%zz%4"}},
        {"x.m3u", "file://LocalHost/a\\b", {"/a\\b"}},
        {"x.m3u", "C:\\a", {"/p/C:\\a", "/p/C:/a"}},
        {"x.m3u", "://a", {"/p/:/a"}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(paths_of_entry(*playlist_format(row.playlist), row.entry, "/p"), row.paths) << row.entry;
    for (const char* url : {"http://a/b.mp3", "file://server/a", "file://a", "file://", "file:///a%00b"})
        EXPECT_THROW(paths_of_entry(*playlist_format("x.m3u"), url, "/p"),
                     vantaro_io::exception_io_no_handler_for_path)
            << url;
}

} // namespace
} // namespace vantaro::core
