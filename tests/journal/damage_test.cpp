// Journals that were damaged, or made by somebody else: no file is lost by them, and none goes unmentioned.

#include "tests/journal/run_fixture.h"

#include "host/api/exceptions.h"

#include <gmock/gmock.h>

#include <fcntl.h>

namespace vantaro::core {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Not;

class DamageTest : public test::RunTest {
protected:
    std::string path(const std::string& name) const { return folder.path("runs/" + name); }
    /// Makes a journal of these records.
    void make_journal(const std::string& name, const std::vector<Record>& records) const {
        folder.make_folder("runs");
        folder.set_mode("runs", 0700);
        std::filesystem::remove(path(name));
        JournalFile journal = JournalFile::create(test::common_system(), path(name));
        for (const Record& record : records) {
            const std::string bytes = encode(record);
            journal.append({&bytes, 1});
        }
    }
    /// What a run would note that makes "new" of "old" in the file.
    FileChange change_of(const std::string& name) const {
        const OpenFile file = OpenFile::open(test::common_system(), folder.write(name, "old"), O_RDONLY);
        return describe_change(file, {3, {{0, 3, "new"}}});
    }
};

TEST_F(DamageTest, AFlippedBitCostsAtMostTheFileThatItIsAbout) {
    const std::string old_bytes = test::pattern(2000);
    const std::vector<std::string> names{"a", "b", "c", "d"};
    // As a small journal, and as one that was packed.
    for (const std::size_t size : {std::size_t{5}, std::size_t{9000}}) {
        std::filesystem::remove_all(folder.path("runs"));
        Edits edits;
        for (const std::string& name : names) {
            folder.write(name, old_bytes + test::noise(20000));
            edits[name] = {{10, size, test::noise(size)}};
        }
        std::map<std::string, std::string> before;
        for (const std::string& name : names)
            before[name] = folder.read(name);
        run(edits);
        std::map<std::string, std::string> after;
        for (const std::string& name : names)
            after[name] = folder.read(name);
        const std::string journal = folder.read("runs/00000001.run");
        for (std::size_t place = 14; place < journal.size(); place += 1 + journal.size() / 150) {
            SCOPED_TRACE("byte " + std::to_string(place) + " of " + std::to_string(journal.size()));
            std::filesystem::remove_all(folder.path("runs"));
            std::string damaged = journal;
            damaged[place] = static_cast<char>(damaged[place] ^ 0x10);
            folder.write("runs/00000001.run", damaged);
            folder.set_mode("runs", 0700);
            for (const std::string& name : names)
                folder.write(name, after[name]);
            ASSERT_EQ(store().runs().size(), 1U);
            const auto errors = undo(1);
            // All are told of: put back, or failed.
            EXPECT_LE(errors.size(), 1U);
            std::size_t lost = 0;
            for (const std::string& name : names) {
                const std::string bytes = folder.read(name);
                EXPECT_TRUE(bytes == before[name] || bytes == after[name]) << name;
                lost += bytes == before[name] ? 0U : 1U;
            }
            EXPECT_EQ(lost, errors.size());
        }
    }
}

TEST_F(DamageTest, ACutOffRunIsPutRightAroundTheDamage) {
    const FileChange first = change_of("a");
    const FileChange second = change_of("b");
    make_journal("00000001.open", {RunStart{1, "test", 0}, NotedChange{0, first}, NotedChange{1, second}});
    for (const char* name : {"a", "b"})
        folder.write(name, "nld"); // half-written
    std::string journal = folder.read("runs/00000001.open");
    const std::size_t place = journal.find(first.path) + first.path.size() + 40;
    journal[place] = static_cast<char>(journal[place] ^ 1);
    folder.write("runs/00000001.open", journal);
    EXPECT_THAT(recover(), Contains(HasSubstr("/a cannot be told")));
    EXPECT_EQ(folder.read("b"), "old");
    EXPECT_EQ(folder.read("a"), "nld");
    EXPECT_THAT(undo(1), ElementsAre(Key("a")));
}

TEST_F(DamageTest, WhatNoRunCanHaveNotedIsNotDone) {
    folder.write("precious", "old");
    const FileChange sound = change_of("a");
    const auto with = [&](const std::function<void(FileChange&)>& edit) {
        FileChange change = sound;
        edit(change);
        return change;
    };
    const FileChange rows[] = {
        with([](FileChange& change) { change.path = "a"; }),
        with([](FileChange& change) { change.path += std::string("\0x", 2); }),
        with([&](FileChange& change) { change.temporary = folder.path("precious"); }),
        with([&](FileChange& change) { change.temporary = "/.vantaro-1"; }),
        with([](FileChange& change) { change.method = static_cast<WriteMethod>(9); }),
        with([](FileChange& change) {
            change.method = WriteMethod::shift;
            change.shift_size = 4096;
        }),
        with([](FileChange& change) { change.ranges[0].old_offset = ~std::uint64_t{0}; }),
        with([](FileChange& change) { change.ranges[0].old_size = std::uint64_t{1} << 62; }),
        with([](FileChange& change) { change.ranges[0].new_size = ~std::uint64_t{0}; }),
        with([](FileChange& change) {
            change.kept = {{0, ~std::uint64_t{0}}};
        }),
        with([](FileChange& change) { change.ranges.push_back(change.ranges[0]); }),
    };
    for (const FileChange& change : rows) {
        EXPECT_THROW(check_change(change), vantaro_io::exception_io_data);
        folder.write("a", "nld");
        make_journal("00000001.open", {RunStart{1, "test", 0}, NotedChange{0, change}});
        EXPECT_THAT(recover(), Not(IsEmpty()));
        EXPECT_EQ(folder.read("a"), "nld");
        std::filesystem::remove_all(folder.path("runs"));
        KeptChange kept{change, {}};
        make_journal("00000001.run", {RunStart{1, "test", 0}, kept, RunEnd{1, false}});
        EXPECT_EQ(undo(1).size(), 1U);
        EXPECT_EQ(folder.read("a"), "nld");
        std::filesystem::remove_all(folder.path("runs"));
    }
    EXPECT_NO_THROW(check_change(sound));
    EXPECT_EQ(folder.read("precious"), "old");
}

TEST_F(DamageTest, SizesBeyondAllMeasureFailTheOneFile) {
    FileChange huge = change_of("a");
    huge.before.size = std::uint64_t{1} << 62;
    huge.ranges[0].old_size = std::uint64_t{1} << 61;
    huge.ranges[0].old_checksum.reset();
    huge.ranges[0].new_bytes.clear();
    FileChange sound = change_of("b");
    sound.ranges[0].old_bytes.insert(0, 1, '\0'); // packed
    sound.ranges[0].new_bytes.clear();
    make_journal("00000001.run",
                 {RunStart{1, "test", 0}, KeptChange{huge, {}}, KeptChange{sound, {}}, RunEnd{2, false}});
    for (const char* name : {"a", "b"})
        folder.write(name, "new");
    EXPECT_THAT(undo(1), ElementsAre(Key("a")));
    EXPECT_EQ(folder.read("a"), "new");
    EXPECT_EQ(folder.read("b"), "old");
}

TEST_F(DamageTest, OnlyTemporaryFilesAreRemoved) {
    folder.write("precious", "bytes");
    folder.write(".vantaro-12-0", "left behind");
    folder.make_folder(".vantaro-folder");
    folder.link(folder.path("precious"), ".vantaro-link");
    make_journal("00000001.open",
                 {RunStart{1, "test", 0}, TemporaryName{folder.path("precious")},
                  TemporaryName{folder.path(".vantaro-12-0")}, TemporaryName{folder.path(".vantaro-folder")},
                  TemporaryName{folder.path(".vantaro-link")}, TemporaryName{".vantaro-x"}});
    EXPECT_EQ(recover().size(), 3U);
    EXPECT_EQ(folder.read("precious"), "bytes");
    EXPECT_FALSE(std::filesystem::exists(folder.path(".vantaro-12-0")));
    EXPECT_TRUE(std::filesystem::exists(folder.path(".vantaro-link")));
}

TEST_F(DamageTest, RecordsOfAnotherKindInFrontAreNoStart) {
    make_journal("00000001.run", {RunEnd{1, false}, RunEnd{1, false}});
    make_journal("00000002.open", {RunEnd{1, false}});
    recover();
    for (const RunSummary& run : store().runs())
        EXPECT_TRUE(run.is_damaged);
    EXPECT_EQ(undo(1).size(), 1U);
}

TEST_F(DamageTest, JournalsThatOthersCanWriteAreNotUsed) {
    FileChange change = change_of("a");
    folder.write("a", "nld");
    const auto make = [&] {
        make_journal("00000001.open", {RunStart{1, "test", 0}, NotedChange{0, change}});
    };
    make();
    folder.set_mode("runs/00000001.open", 0666);
    EXPECT_THAT(recover(), ElementsAre(HasSubstr("others can write to it")));
    make();
    folder.set_mode("runs", 0777);
    EXPECT_THAT(recover(), ElementsAre(HasSubstr("others can write to it")));
    EXPECT_EQ(run({{"a", {{0, 1, "x"}}}}).size(), 1U) << "and none is begun there";
    folder.set_mode("runs", 0700);
    std::filesystem::rename(path("00000001.open"), folder.path("elsewhere"));
    std::filesystem::create_symlink(folder.path("elsewhere"), path("00000001.open"));
    EXPECT_EQ(recover().size(), 1U);
    if (::geteuid() == 0) {
        make();
        ASSERT_EQ(::chown(path("00000001.open").c_str(), 65534, 65534), 0);
        EXPECT_THAT(recover(), ElementsAre(HasSubstr("belongs to another user")));
    }
    EXPECT_EQ(folder.read("a"), "nld");
    make();
    recover();
    EXPECT_EQ(folder.read("a"), "old");
}

TEST(EarlyJournals, CanStillBeTakenBack) {
    // A change and a kept change as versions up to 1.9 wrote them.
    const auto number = [](std::uint64_t value) {
        std::string bytes(8, '\0');
        for (std::size_t i = 8; i-- > 0; value >>= 8)
            bytes[i] = static_cast<char>(value);
        return bytes;
    };
    const auto text = [](const std::string& value) {
        return std::string(3, '\0') + static_cast<char>(value.size()) + value;
    };
    const std::string head = text("/a") + number(1) + number(2) + number(10) + number(4) + number(11)
                             + number(0) + number(0) + number(0) + text("") + number(0) + number(1)
                             + number(1) + number(2) + number(10) + number(5) + number(1);
    const auto range = [&](const std::string& old_bytes, const std::string& new_bytes) {
        return number(3) + text(old_bytes) + number(3) + number(4) + number(77) + text(new_bytes);
    };
    const auto noted =
        std::get<NotedChange>(decode('\2' + number(7) + head + range("old", std::string("\0news", 5))));
    EXPECT_EQ(noted.number, 7U);
    ASSERT_EQ(noted.change.ranges.size(), 1U);
    EXPECT_EQ(noted.change.ranges[0].old_size, 3U);
    EXPECT_EQ(noted.change.ranges[0].new_bytes, "news");
    EXPECT_TRUE(noted.change.ranges[0].old_checksum);
    const auto kept =
        std::get<KeptChange>(decode('\5' + head + range(std::string("\0old", 4), "") + number(1) + number(2)
                                    + number(11) + number(6) + number(1) + number(3)));
    EXPECT_EQ(kept.change.ranges[0].old_size, 3U);
    EXPECT_FALSE(kept.change.ranges[0].old_checksum);
    EXPECT_EQ(kept.after.modified, 6);
    EXPECT_THROW(
        decode('\5' + head + range("old", "") + number(1) + number(2) + number(11) + number(6) + number(0)),
        vantaro_io::exception_io_data);
}

} // namespace
} // namespace vantaro::core
