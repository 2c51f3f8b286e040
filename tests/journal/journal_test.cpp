// Journals as bytes: what is written is read back, what is torn or damaged does no harm; and how long runs
// are kept.

#include "tests/journal/run_fixture.h"

#include "host/api/exceptions.h"
#include "vantaro/journal/packing.h"

#include <gmock/gmock.h>

#include <fcntl.h>

namespace vantaro::core {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t day = 86'400'000'000'000;

Record full_change() {
    FileChange change;
    change.path = std::string("/music/caf\xe9\n.mp3");
    change.before = {1, 2, 3, -4};
    change.before.size = (std::uint64_t{1} << 40) + 8192;
    change.new_size = std::uint64_t{1} << 40;
    change.method = WriteMethod::shift;
    change.shift_offset = 4096;
    change.shift_size = -8192;
    change.temporary = "/music/.vantaro-1";
    change.modified = -5;
    change.ranges = {{10, 4, 0xFFFFFFFE, std::string("\0old", 4), 11, 3, 0xFFFFFFFF, "new"},
                     {20, 0, {}, "", 21, 0, 0, ""}};
    change.kept = {{0, 3}, {14, 6}};
    change.kept_checksum = 0x80000001;
    return NotedChange{42, change};
}

FileChange small_change() {
    FileChange change;
    change.path = "/a";
    return change;
}

const std::vector<Record> records{RunStart{-1, "run x", 7},
                                  TemporaryName{"/a/b"},
                                  full_change(),
                                  ChangeOutcome{3, FileState::foreign, {1, 2, 3, 4}, true},
                                  RunEnd{5, true},
                                  KeptChange{small_change(), {1, 2, 3, 4}}};

TEST(JournalRecord, IsReadAsItWasWritten) {
    for (const Record& record : records) {
        const std::string bytes = encode(record);
        EXPECT_EQ(decode(bytes), record);
        for (std::size_t size = 0; size < bytes.size(); ++size)
            EXPECT_THROW(decode(bytes.substr(0, size)), vantaro_io::exception_io_data) << size;
        EXPECT_THROW(decode(bytes + '\0'), vantaro_io::exception_io_data);
    }
    for (const char* garbage : {"", "\x06", "\x08", "\xff"})
        EXPECT_THROW(decode(garbage), vantaro_io::exception_io_data);
    EXPECT_EQ(noted_number(encode(full_change()).substr(0, 9)), 42U);
}

TEST(Packing, TakesLittleForWhatIsInTheReference) {
    const std::string picture = test::noise(200'000);
    const std::string old_bytes = "title" + picture + std::string(100, '\0');
    const std::string new_bytes = "longer title" + picture + std::string(93, '\0');
    const std::string packed = pack(new_bytes, old_bytes);
    EXPECT_LT(packed.size(), 200U);
    EXPECT_EQ(unpack(packed, old_bytes, new_bytes.size()), new_bytes);
    for (const std::string& reference : {std::string(), old_bytes})
        for (const std::string& bytes : {std::string(), std::string("x"), picture.substr(0, 70), picture})
            EXPECT_EQ(unpack(pack(bytes, reference), reference, bytes.size()), bytes);
    EXPECT_LE(pack(picture, "").size(), picture.size() + 1);
}

TEST(Packing, WhatDoesNotFitIsNoResult) {
    const std::string bytes = test::noise(1000);
    const std::string packed = pack("new" + bytes.substr(3), bytes);
    EXPECT_THROW(unpack(packed, bytes, 999), vantaro_io::exception_io_data);
    EXPECT_THROW(unpack(packed, bytes.substr(0, 500), 1000), vantaro_io::exception_io_data);
    EXPECT_THROW(unpack(packed, std::string(1000, 'x'), 1000), vantaro_io::exception_io_data);
    for (const char* garbage : {"", "\x02", "\x01", "\x01garbage"})
        EXPECT_THROW(unpack(garbage, bytes, 7), vantaro_io::exception_io_data);
}

class JournalTest : public test::RunTest {
protected:
    std::string path(const std::string& name = "00000001.run") const { return folder.path("runs/" + name); }
    void set_bytes(const std::string& name, const std::string& bytes) const { folder.write(name, bytes); }
    static std::vector<Record> read(const OpenFile& file) {
        std::vector<Record> result;
        JournalReader reader(file);
        while (const auto bytes = reader.next())
            result.push_back(decode(*bytes));
        return result;
    }
    OpenFile open(const std::string& name) const {
        return OpenFile::open(real_system_calls(), folder.path(name), O_RDONLY);
    }
    void make_runs(int count) const {
        for (int i = 0; i < count; ++i)
            run({{"a", {{10, 5, "HELLO" + std::to_string(i)}}}});
    }
};

TEST_F(JournalTest, IsTheseBytes) {
    {
        JournalFile journal = JournalFile::create(real_system_calls(), folder.path("j"));
        const std::string record = encode(RunEnd{258, true});
        journal.append({&record, 1});
    }
    using namespace std::string_literals;
    EXPECT_EQ(folder.read("j"), "vantaro run 1\n"
                                "\x11\0\0\0\x5C\xA5\xD4\x0C"
                                "\x04\0\0\0\0\0\0\x01\x02\0\0\0\0\0\0\0\x01"s);
}

TEST_F(JournalTest, ATornEndIsTheEndAndDamageIsPassedOver) {
    std::vector<std::uint64_t> ends;
    {
        JournalFile journal = JournalFile::create(real_system_calls(), folder.path("j"));
        for (const Record& record : records) {
            const std::string bytes = encode(record);
            journal.append({&bytes, 1});
            ends.push_back(journal.size());
        }
    }
    const std::string bytes = folder.read("j");
    for (std::size_t size = 14; size <= bytes.size(); ++size) {
        set_bytes("cut", bytes.substr(0, size));
        const auto whole = static_cast<std::size_t>(
            std::ranges::count_if(ends, [&](std::uint64_t end) { return end <= size; }));
        ASSERT_EQ(read(open("cut")),
                  std::vector(records.begin(), records.begin() + static_cast<long>(whole)));
        // A power failure can leave zeros in the place of what was not flushed.
        const std::string zeros = bytes.substr(0, size) + std::string(bytes.size() - size + 100, '\0');
        set_bytes("cut", zeros);
        ASSERT_EQ(static_cast<std::ptrdiff_t>(read(open("cut")).size()),
                  std::ranges::count_if(ends, [&](std::uint64_t end) {
                      return zeros.compare(0, end, bytes, 0, end) == 0; // it may have ended in zeros
                  }));
        set_bytes("cut", bytes.substr(0, size));
        // What is appended later is found again.
        auto journal = JournalFile::take_over(real_system_calls(), folder.path("cut"));
        ASSERT_TRUE(journal);
        const std::string last = encode(RunEnd{9, false});
        journal->append({&last, 1});
        const auto now = read(open("cut"));
        ASSERT_EQ(now.size(), whole + 1);
        ASSERT_EQ(now.back(), Record(RunEnd{9, false}));
    }
    for (std::size_t place = 14; place < bytes.size(); ++place) {
        std::string damaged = bytes;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x40);
        set_bytes("damaged", damaged);
        // Only the one record is lost.
        std::vector<Record> others = records;
        others.erase(others.begin()
                     + std::ranges::count_if(ends, [&](std::uint64_t end) { return end <= place; }));
        ASSERT_EQ(read(open("damaged")), others) << place;
    }
}

TEST_F(JournalTest, GarbageAmongTheRunsDoesNoHarm) {
    folder.write("a", test::pattern(20000));
    make_runs(2);
    cut_off(1);
    folder.write("runs/00000007.run", "no journal");
    folder.write("runs/00000008.run");
    folder.write("runs/00000009.open", "no journal");
    folder.write("runs/00000010.open");
    folder.write("runs/00000011.open", "vantaro" + std::string(200, '\0'));
    folder.write("runs/00000012.open", std::string(200, '\0'));
    folder.write("runs/note.run", "no journal");
    folder.write("runs/00000002.run.bak", "no journal");
    EXPECT_THAT(recover(),
                ElementsAre(HasSubstr("00000009.open"), HasSubstr("Run 1 was cut off: 1 file has")));
    EXPECT_EQ(folder.read("runs/00000009.open"), "no journal");
    const auto runs = store().runs();
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].number, 2U);
    EXPECT_THROW(undo(7), vantaro_io::exception_io);
    make_runs(1);
    EXPECT_EQ(store().runs().front().number, 10U);
}

TEST_F(JournalTest, ARunUnderWayIsNotTakenOver) {
    RunStore runs = store();
    const OpenRun open_run = runs.begin({1, "test", 0});
    EXPECT_THAT(recover(), IsEmpty());
    EXPECT_TRUE(runs.runs().front().is_open);
    EXPECT_THROW(undo(1), vantaro_io::exception_io);
}

TEST_F(JournalTest, ARunThatHasEndedIsNotLookedAfter) {
    folder.write("a", test::pattern(20000));
    make_runs(1);
    std::filesystem::rename(path(), path("00000001.open")); // its last name got lost
    EXPECT_THAT(recover(), IsEmpty());
    EXPECT_EQ(store().runs().front().files, 1U);
    EXPECT_FALSE(store().runs().front().was_cut_off);
}

TEST_F(JournalTest, AFileOutOfReachKeepsItsRunOpen) {
    const std::string old_bytes = test::pattern(20000);
    for (const char* name : {"a", "b"})
        folder.write(name, old_bytes);
    run({{"a", {{10, 5, "HELLO"}}}, {"b", {{10, 5, "HELLO"}}}});
    // As a crash would leave it, half-way through the first file.
    cut_off(1);
    folder.write("elsewhere", test::edited(old_bytes, {{10, 2, "HE"}}));
    std::filesystem::remove(folder.path("a"));
    folder.make_folder("a"); // cannot be opened for writing
    EXPECT_THAT(recover(), ElementsAre(AllOf(HasSubstr("/a: "), HasSubstr("next start"))));
    EXPECT_TRUE(store().runs().front().is_open);
    EXPECT_TRUE(store().runs().front().was_cut_off);
    std::filesystem::remove(folder.path("a"));
    std::filesystem::rename(folder.path("elsewhere"), folder.path("a"));
    EXPECT_THAT(recover(), ElementsAre(HasSubstr("1 file has its new tags, 1 its old ones")));
    EXPECT_EQ(folder.read("a"), old_bytes);
    EXPECT_EQ(folder.read("b"), test::edited(old_bytes, {{10, 5, "HELLO"}}));
    EXPECT_FALSE(store().runs().front().is_open);
    EXPECT_TRUE(store().runs().front().was_cut_off);
}

TEST_F(JournalTest, RecoveryLeavesOtherPeoplesChangesAlone) {
    folder.write("a", test::pattern(20000));
    run({{"a", {{10, 5, "HELLO"}}}});
    cut_off(1);
    for (const std::string& bytes :
         {test::edited(test::pattern(20000), {{10, 5, "OTHER"}}), std::string("short")}) {
        folder.write("a", bytes);
        recover();
        EXPECT_EQ(folder.read("a"), bytes);
        if (std::filesystem::exists(path()))
            cut_off(1);
    }
}

TEST_F(JournalTest, OldRunsGoAndTheNewestStays) {
    folder.write("a", test::pattern(20000));
    make_runs(4); // at the time 1
    const std::uint64_t size = store().runs().front().bytes;
    RunStore runs = store();
    const auto add_run_of = [&](std::int64_t time) {
        OpenRun run = runs.begin({time, "test", 0});
        runs.end(std::move(run), {0, false});
    };
    runs.prune({30, 1'000'000'000}, 29 * day);
    EXPECT_EQ(runs.runs().size(), 4U);
    runs.prune({30, 3 * size + size / 2}, 29 * day);
    EXPECT_EQ(runs.runs().size(), 3U);
    // A clock that is wrong once, and was not when the run before was made.
    add_run_of(3000 * day);
    runs.prune({30, 1'000'000'000}, 3000 * day);
    EXPECT_EQ(runs.runs().size(), 4U);
    add_run_of(31 * day);
    runs.prune({30, 1'000'000'000}, 31 * day);
    EXPECT_EQ(runs.runs().size(), 2U);
    runs.prune({0, 0}, 32 * day);
    ASSERT_EQ(runs.runs().size(), 1U);
    EXPECT_EQ(runs.runs().front().number, 6U);
}

TEST_F(JournalTest, OnlyRunsThatEndMakeOldOnesGo) {
    folder.write("a", test::pattern(20000));
    make_runs(3);
    RunStore runs = store();
    const auto run_once = [&] { runs.end(runs.begin({100 * day, "test", 0}), {0, false}); };
    run_once();
    EXPECT_EQ(runs.runs().size(), 4U);
    runs.set_retention({30, 1'000'000'000});
    EXPECT_EQ(runs.runs().size(), 4U);
    run_once();
    EXPECT_EQ(runs.runs().size(), 2U);
}

} // namespace
} // namespace vantaro::core
