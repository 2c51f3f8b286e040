// The host's small services.

#include "tests/support/temporary_folder.h"
#include "vantaro/common/path_text.h"
#include "vantaro/services/clock.h"
#include "vantaro/services/digest.h"
#include "vantaro/services/local_files.h"
#include "vantaro/services/main_thread.h"
#include "vantaro/terminal/terminal.h"

#include "host/api/abort_flag.h"
#include "host/api/exceptions.h"
#include "vantaro/services/abort_signal.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <poll.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>

namespace vantaro::core {
namespace {

using testing::ElementsAre;

class ServicesTest : public testing::Test {
protected:
    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication qt{argc, argv};
    std::vector<std::string> reported;
    MainThread main_thread{[this](const std::string& line) { reported.push_back(line); }};
};

TEST_F(ServicesTest, CallsRunOnTheMainThreadInTheirOrder) {
    std::vector<int> order;
    bool on_main_thread = true;
    std::thread other([&] {
        EXPECT_FALSE(main_thread.is_current());
        for (int i = 0; i < 3; ++i)
            main_thread.post([&, i] {
                on_main_thread &= main_thread.is_current();
                order.push_back(i);
            });
        main_thread.post([] { throw std::runtime_error("a call that fails"); });
        main_thread.post([&] { order.push_back(3); });
    });
    main_thread.run_until([&] { return order.size() == 4; });
    other.join();
    EXPECT_TRUE(on_main_thread);
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(reported, ElementsAre("a call that fails"));
}

class CountingCallback final : public StaticService<ClockCallback> {
public:
    void on_time(std::uint64_t time) override {
        ++calls;
        last = time;
        if (on_each)
            on_each();
    }
    int calls = 0;
    std::uint64_t last = 0;
    std::function<void()> on_each;
};

TEST_F(ServicesTest, TheClockCallsUntilItIsToldToStop) {
    constexpr std::uint64_t millisecond = 10'000;
    constexpr std::uint64_t start_of_2020 = 132'223'104'000'000'000;
    Clock clock(main_thread);
    CountingCallback callback;
    clock.register_callback(&callback, millisecond);
    EXPECT_EQ(callback.calls, 1); // the first time does not wait
    EXPECT_GT(callback.last, start_of_2020);
    main_thread.run_until([&] { return callback.calls >= 3; });
    callback.on_each = [&] { clock.unregister_callback(&callback); }; // from inside a call
    const int before = callback.calls;
    main_thread.run_until([&] { return callback.calls > before; });
    bool later = false;
    QTimer::singleShot(20, [&] { later = true; });
    main_thread.run_until([&] { return later; });
    EXPECT_EQ(callback.calls, before + 1);
}

TEST_F(ServicesTest, DigestsAreMd5) {
    Md5Service service;
    const Guid digest = service.digest("abc", 3);
    const std::array<std::uint8_t, 16> expected{0x90, 0x01, 0x50, 0x98, 0x3C, 0xD2, 0x4F, 0xB0,
                                                0xD6, 0x96, 0x3F, 0x7D, 0x28, 0xE1, 0x7F, 0x72};
    EXPECT_EQ(digest.bytes, expected);
    const auto state = Ref<DigestState>::adopt(service.initialise());
    state->process("a", 1);
    state->process("bc", 2);
    EXPECT_EQ(state->result(), digest);
}

TEST(AbortSignal, WakesWhoWaits) {
    AbortSignal abort;
    pollfd waiting{abort.wait_handle(), POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, 0), 0);
    EXPECT_NO_THROW(abort.check());
    abort.set();
    abort.set();
    EXPECT_EQ(::poll(&waiting, 1, 0), 1);
    EXPECT_THROW(abort.check(), vantaro_io::exception_aborted);
}

TEST(LocalFiles, AreReadAndReplacedByTheirPaths) {
    const test::TemporaryFolder folder;
    const AbortSignal interrupt;
    LocalFileSystem files(interrupt);
    AbortSignal abort;
    const std::string path = folder.write("caf\xE9.bin", "old content");
    {
        const auto file = Ref<File>::adopt(files.open(path.c_str(), OpenMode::write_new, abort));
        file->writer().write("new", 3, abort);
        file->flush(abort);
        char byte = 0;
        EXPECT_THROW(file->reader().read(&byte, 1, abort), vantaro_io::exception_io);
    }
    const auto file = Ref<File>::adopt(files.open(path.c_str(), OpenMode::read, abort));
    std::uint64_t size = 0;
    EXPECT_TRUE(file->get_size(size, abort));
    EXPECT_EQ(size, 3U);
    char bytes[8] = {};
    EXPECT_EQ(file->reader().read(bytes, sizeof bytes, abort), 3U);
    EXPECT_STREQ(bytes, "new");
    EXPECT_THROW(files.open(folder.path("none").c_str(), OpenMode::read, abort),
                 vantaro_io::exception_io_not_found);
    EXPECT_THROW(files.open(folder.path("no/folder").c_str(), OpenMode::write_new, abort),
                 vantaro_io::exception_io_not_found);
    for (const char* served : {"/a/b", "/music/a://b.flac", "a/http://b", "://x", "2a://b"})
        EXPECT_TRUE(files.serves(served)) << served;
    for (const char* other : {"http://a/b", "FILE:///a", "a+b-1.2://c", ""})
        EXPECT_FALSE(files.serves(other)) << other;
    EXPECT_FALSE(files.is_remote(path.c_str()));
}

TEST(LocalFiles, AreRefusedWhereReadingWouldWait) {
    const test::TemporaryFolder folder;
    const AbortSignal interrupt;
    AbortSignal abort;
    LocalFileSystem files(interrupt);
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    folder.link("pipe", "link");
    for (const std::string& path : {folder.path("pipe"), folder.path("link"), std::string("/dev/zero")})
        EXPECT_THROW(Ref<File>::adopt(files.open_stored(path.c_str(), abort)), vantaro_io::exception_io)
            << path;
    EXPECT_THROW(files.open_stored(folder.path("none").c_str(), abort), vantaro_io::exception_io_not_found);
    folder.write("file", "x");
    const auto file = Ref<File>::adopt(files.open_stored(folder.path("file").c_str(), abort));
    char byte = 0;
    EXPECT_EQ(file->reader().read(&byte, 1, abort), 1U);
}

TEST(LocalFiles, AreFoundWithoutRegardToCase) {
    const test::TemporaryFolder folder;
    const AbortSignal interrupt;
    LocalFileSystem files(interrupt);
    const auto found = [&](const char* name) {
        StringSink out;
        const std::string path = folder.path(name);
        return files.find_ignoring_case(path.c_str(), out)
                   ? out.take().substr(path.size() - std::strlen(name))
                   : std::string("none");
    };
    for (const char* name : {"Album.CUE", "ALBUM.cue", "\u00C9t\u00E9.Cue", "caf\xE9.CUE", "x.cue.bak"})
        folder.write(name, name);
    folder.make_folder("Folder.CUE");
    folder.write("folder.cue", "");
    const struct {
        const char* wanted;
        const char* found;
    } rows[] = {{"album.cue", "ALBUM.cue"},     {"\u00E9t\u00C9.cue", "\u00C9t\u00E9.Cue"},
                {"caf\xE9.cue", "caf\xE9.CUE"}, {"caf\xC9.cue", "none"},
                {"FOLDER.cue", "folder.cue"},   {"x.cue", "none"},
                {"no/such.cue", "none"}};
    for (const auto& row : rows)
        EXPECT_EQ(found(row.wanted), row.found) << row.wanted;

    // The listing of a folder that has long been as it is is kept until the folder changes.
    const auto long_ago = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::filesystem::last_write_time(folder.path(), long_ago);
    EXPECT_EQ(found("new.cue"), "none");
    folder.write("New.cue", "");
    EXPECT_EQ(found("new.cue"), "New.cue");
    std::filesystem::remove(folder.path("New.cue"));
    EXPECT_EQ(found("new.cue"), "none");
}

TEST(LocalFiles, ShowTheirPathsAsTexts) {
    const AbortSignal interrupt;
    LocalFileSystem files(interrupt);
    const auto shown = [&](const char* path) {
        StringSink out;
        EXPECT_TRUE(files.get_display_path(path, out));
        return out.take();
    };
    EXPECT_EQ(shown("/m/caf\u00E9/a.flac"), "/m/caf\u00E9/a.flac");
    EXPECT_EQ(shown("/\u00FC/caf\xE9 \x80\u00E9/\xFC"), "/\u00FC/caf\u00E9 \u20AC\u00C3\u00A9/\u00FC");
    set_path_code_page("koi8-r");
    EXPECT_EQ(shown("/\xED\xC9\xD2"), "/\u041C\u0438\u0440");
    EXPECT_THROW(set_path_code_page("klingon"), vantaro_io::exception_io);
    EXPECT_EQ(shown("/\xED"), "/\u041C");
    set_path_code_page("windows-1252");
}

TEST(LocalFiles, MayBePipesAndDoNotWaitForEver) {
    const test::TemporaryFolder folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    constexpr auto moment = std::chrono::milliseconds(50);
    const auto exchange = [&](AbortSignal& abort, const AbortSignal& interrupt, OpenMode mode) {
        LocalFileSystem files(interrupt);
        const auto file = Ref<File>::adopt(files.open(pipe.c_str(), mode, abort));
        std::string bytes(200'000, 'x'); // more than a pipe takes at once
        if (mode == OpenMode::read)
            bytes.resize(file->reader().read(bytes.data(), bytes.size(), abort));
        else
            file->writer().write(bytes.data(), bytes.size(), abort);
        return bytes.size();
    };
    for (const OpenMode mode : {OpenMode::read, OpenMode::write_new}) {
        for (const bool by_interrupt : {false, true}) {
            // Nobody comes to the other end.
            AbortSignal abort;
            AbortSignal interrupt;
            std::jthread later([&] {
                std::this_thread::sleep_for(moment);
                (by_interrupt ? interrupt : abort).set();
            });
            EXPECT_THROW(exchange(abort, interrupt, mode), vantaro_io::exception_aborted);
        }
        AbortSignal abort;
        const AbortSignal interrupt;
        std::size_t size = 0;
        std::jthread other([&] { size = exchange(abort, interrupt, mode); });
        std::this_thread::sleep_for(moment);
        std::fstream end(pipe, mode == OpenMode::read ? std::ios::out : std::ios::in);
        std::string bytes(200'000, 'y');
        if (mode == OpenMode::read) {
            end.write(bytes.data(), 100'000).flush();
            std::this_thread::sleep_for(moment);
            end.write(bytes.data(), 100'000).flush();
        } else {
            std::this_thread::sleep_for(moment);
            end.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            EXPECT_EQ(bytes, std::string(200'000, 'x'));
        }
        end.close();
        other.join();
        EXPECT_EQ(size, 200'000U);
    }
}

TEST(Terminal, ShowsNoControlCharacters) {
    EXPECT_EQ(printable("a\x1B[2Jb\tc\x7F"), "a_[2Jb_c_");
    EXPECT_EQ(printable("caf\xE9 \x9B"), "caf\xEF\xBF\xBD \xEF\xBF\xBD");
    EXPECT_EQ(printable("\xC2\x9B"
                        "31m \xC3\xA9 \xC2\xA0"),
              "_31m \xC3\xA9 \xC2\xA0");
}

TEST(Terminal, ShowsNoDirectionMarks) {
    struct Case {
        const char* text;
        const char* line;
        const char* lines;
        const char* json;
    };
    const std::vector<Case> cases{
        {"\u061B\u061C\u061D", "\u061B_\u061D", "\u061B_\u061D", "\u061B\\u061c\u061D"},
        {"\u200D\u200E\u200F\u2010", "\u200D__\u2010", "\u200D__\u2010", "\u200D\\u200e\\u200f\u2010"},
        {"\u2027\u2028\u202E\u202F", "\u2027__\u202F", "\u2027__\u202F", "\u2027\\u2028\\u202e\u202F"},
        {"\u2065\u2066\u2069\u206A", "\u2065__\u206A", "\u2065__\u206A", "\u2065\\u2066\\u2069\u206A"},
        {"a\n\tb\x7F", "a__b_", "a\n\tb_", "a\n\tb\\u007f"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(printable(c.text), c.line);
        EXPECT_EQ(printable_text(c.text), c.lines);
        EXPECT_EQ(printable_json(c.text), c.json);
    }
}

} // namespace
} // namespace vantaro::core
