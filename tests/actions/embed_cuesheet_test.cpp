#include "actions/embed_cuesheet.h"

#include "actions/cue_file.h"
#include "host/api/filesystem.h"
#include "host/api/memory_stream.h"
#include "tests/actions/kinds_fixture.h"

#include <map>

namespace quorvex {
namespace {

using namespace vantaro;

/// Files by path: "/..." on this machine, "net:..." elsewhere; both are shown to people in "<>".
class CueFiles final : public HeapService<FileSystem> {
public:
    struct Content {
        std::string bytes = {};
        bool size_is_known = true;
        /// Instead of the number of bytes.
        std::uint64_t size = 0;
        bool fails = false;
    };
    std::map<std::string, Content> files;

    bool serves(const char* path) override { return *path == '/' || is_remote(path); }
    bool is_remote(const char* path) override { return std::string_view(path).starts_with("net:"); }
    bool get_display_path(const char* path, TextSink& out) override {
        set_text(out, "<" + std::string(path) + ">");
        return true;
    }
    File* open(const char* path, OpenMode mode, AbortFlag&) override {
        EXPECT_EQ(mode, OpenMode::read);
        const auto found = files.find(path);
        if (found == files.end())
            throw vantaro_io::exception_io_not_found();
        return new CueFile(found->second);
    }

private:
    class CueFile final : public HeapService<File>, public StreamReader {
    public:
        explicit CueFile(const Content& content) : content_(content) {}
        StreamReader& reader() override { return *this; }
        StreamWriter& writer() override { throw vantaro_io::exception_io_denied(); }
        bool get_size(std::uint64_t& size, AbortFlag&) override {
            size = content_.size ? content_.size : content_.bytes.size();
            return content_.size_is_known;
        }
        void flush(AbortFlag&) override {}
        std::size_t read(void* buffer, std::size_t count, AbortFlag& abort) override {
            if (content_.fails)
                throw vantaro_io::exception_io("disk on fire");
            return rest_.read(buffer, count, abort);
        }

    private:
        const Content& content_;
        MemoryReader rest_{content_.bytes};
    };
};

class EmbedCue : public test::Kinds {
protected:
    EmbedCue() { host_.offer<FileSystem>(files_); }
    /// What the action makes of a track that can carry a cue sheet, or what it says.
    std::string embedded(const char* path, std::uint32_t subsong = 0, bool supported = true) {
        TrackInfoRecord info = test::tags("CUESHEET=[old][older]");
        if (supported)
            info.set_technical("cue_embedded", "");
        core::Track track(path, subsong);
        action(EmbedCuesheet::kind, "")->apply(&track, info, 0, 1);
        const std::string said = host_.take_events();
        EXPECT_EQ(said.empty(), info.value_count(0) == 1) << "edited, or told why not";
        return said.empty() ? info.value(0, 0) : said;
    }

    const Ref<CueFiles> files_ = make_service<CueFiles>();
};

TEST(CueFile, StandsBesideTheTrack) {
    const struct {
        const char* track;
        const char* cue;
    } rows[] = {
        {"/m/Song.flac", "/m/Song.cue"},
        {"/m/Song.x.flac", "/m/Song.x.cue"},
        {"/m/Song.", "/m/Song.cue"},
        {"/m/Song", "/m/Song.cue"},
        {"/My.Music/Album", "/My.Music/Album.cue"},
        {"C:\\My.Music\\Album", "C:\\My.Music\\Album.cue"},
        {"a.b|c", "a.b|c.cue"},
        {"a.b:c", "a.b:c.cue"},
        {"/m/.flac", "/m/.cue"},
        {"", ".cue"},
        {"/m/\xFF.flac", "/m/\xFF.cue"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(cue_path_of(row.track), row.cue) << row.track;
}

TEST_F(EmbedCue, ReadsTheText) {
    const std::string chunk(65536, 'x');
    const struct {
        const char* name;
        std::string bytes = {};
        std::string text;
    } rows[] = {
        {"ASCII", "TITLE x\r\n", "TITLE x\r\n"},
        {"UTF-8 with mark", "\xEF\xBB\xBF\u00E9", "\u00E9"},
        {"UTF-8 without mark", "caf\u00E9", "caf\u00E9"},
        {"Windows-1252", "caf\xE9 \x80", "caf\u00E9 \u20AC"},
        {"UTF-16, little end first", std::string("\xFF\xFET\0\xE9\0\x0A\0", 8), "T\u00E9\n"},
        {"UTF-16, big end first", std::string("\xFE\xFF\0T\0\xE9\0\0\0x", 10), "T\u00E9"},
        {"UTF-16, cut off", std::string("\xFF\xFET\0\xE9", 5), "T\uFFFD"},
        {"damaged UTF-8 with mark", "\xEF\xBB\xBFx\xE9.", "x\uFFFD."},
        {"up to NUL", std::string("ab\0cd\xE9", 6), "ab"},
        {"NUL behind the mark", std::string("\xEF\xBB\xBF\0x", 5), ""},
        {"part of a mark", "\xEF\xBB", "\u00EF\u00BB"},
        {"empty", "", ""},
        {"character across chunks", chunk.substr(1) + "\u00E9", chunk.substr(1) + "\u00E9"},
        {"several chunks", chunk + chunk + "\xE9", chunk + chunk + "\u00E9"},
    };
    for (const auto& row : rows) {
        for (const bool known : {true, false}) {
            files_->files["/m/Song.cue"] = {.bytes = row.bytes, .size_is_known = known};
            EXPECT_EQ(embedded("/m/Song.flac"), row.text) << row.name;
        }
    }
    files_->files = {{"/m/Song.flac.cue", {.bytes = "second"}}};
    EXPECT_EQ(embedded("/m/Song.flac"), "second");
    files_->files["/m/Song.cue"].bytes = "first";
    EXPECT_EQ(embedded("/m/Song.flac"), "first");
}

TEST_F(EmbedCue, TellsWhyNot) {
    files_->files["/m/Song.cue"].bytes = "x";
    EXPECT_EQ(embedded("/m/Song.mp3", 2, false),
              "Embedded cuesheets not supported for this file format: </m/Song.mp3>");
    EXPECT_EQ(embedded("/m/Song.flac", 2), "Cuesheet embedding not available for subsongs: </m/Song.flac>");
    EXPECT_EQ(embedded("net:Song.flac"),
              "Cuesheet embedding not available for this filesystem: <net:Song.flac>");
    EXPECT_EQ(embedded("what:Song.flac"),
              "Cuesheet embedding not available for this filesystem: what:Song.flac");
    const auto failed = [](const char* reason) {
        return std::string("Could not load external cuesheet for \"</m/Song.flac>\", reason: ") + reason;
    };
    const std::uint64_t too_large = largest_cue_file + 1;
    files_->files["/m/Song.cue"] = {.bytes = "x", .size = too_large};
    EXPECT_EQ(embedded("/m/Song.flac"), failed("Unsupported format or corrupted file"));
    files_->files["/m/Song.cue"] = {.bytes = "x", .size = largest_cue_file};
    EXPECT_EQ(embedded("/m/Song.flac"), "x") << "as large as may be";
    files_->files["/m/Song.cue"] = {.bytes = std::string(too_large, 'x'), .size_is_known = false};
    EXPECT_EQ(embedded("/m/Song.flac"), failed("Unsupported format or corrupted file"));
    files_->files = {{"/m/Song.cue", {.fails = true}}, {"/m/Song.flac.cue", {.bytes = "second"}}};
    EXPECT_EQ(embedded("/m/Song.flac"), failed("disk on fire")) << "the second is for a first that is absent";
    files_->files.clear();
    EXPECT_EQ(embedded("/m/Song.flac"), failed("File not found"));
}

} // namespace
} // namespace quorvex
