#include "tests/component/component_fixture.h"

namespace quorvex {
namespace {

using test::bytes;

// The variables' GUIDs as the stream has them.
const std::string kept = "3c 17 2e 0e 52 e7 ab 46 80 9b 20 80 a8 38 54 7d ";
const std::string input = "2a 1d 05 37 d1 b0 a4 4c 9e bf ea 7e 75 ef 00 4b ";
const std::string guess = "86 da 97 84 a5 68 c0 47 9a 46 9b 14 54 98 77 6d ";
const std::string format = "51 30 ef ca ba 63 e0 44 9b ef 5c e8 34 c3 f2 80 ";
const std::string guesses = "c3 17 e2 cb 92 92 33 4e 96 41 44 16 60 11 c4 33 ";
const std::string formats = "36 f8 bf 10 b2 94 f0 43 89 15 79 5f ee 2f c2 fc ";
const std::string names = "f9 bc e9 d9 cb 3e b2 4c 9b f8 d4 bc f7 16 6e de ";
const std::string album = "b0 1d c4 ff a9 9f cd 4a b4 e5 ed ba 21 2b 94 3e ";
const std::string placement = "fc 9a 96 d7 ec 98 f2 4e 97 71 a4 65 5e 05 f4 a1 ";
const std::string library = "fd c5 ec 3a c9 82 8b 48 81 81 08 75 a3 87 ff 3e ";
const std::string close = "15 f4 68 eb 69 9f f0 4f 86 42 c4 b8 10 24 a9 11 ";
const std::string threshold = "e7 31 bb 3d 54 f0 d1 44 b3 c8 f5 3d f2 81 49 87 ";
const std::string unknown = "00 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff ";

class StoredConfiguration : public test::Component {
protected:
    /// The records that differ from those of a fresh component, as "name=data".
    std::string changed() {
        constexpr const char* record_names[] = {"kept",      "input",   "guess", "format",
                                                "guesses",   "formats", "names", "album",
                                                "placement", "library", "close", "threshold"};
        std::string text;
        const std::vector<std::string> now = records(written());
        const std::vector<std::string> before = records(initial());
        for (std::size_t i = 0; i < now.size(); ++i)
            if (now[i] != before.at(i))
                text.append(text.empty() ? "" : "; ")
                    .append(record_names[i])
                    .append("=" + test::bytes_text(now[i]));
        return text;
    }

private:
    static std::vector<std::string> records(std::string_view bytes) {
        std::vector<std::string> data;
        while (!bytes.empty()) {
            std::size_t size = 0;
            for (std::size_t i = 4; i-- > 0;)
                size = size << 8 | static_cast<unsigned char>(bytes.at(16 + i));
            data.emplace_back(bytes.substr(20, size));
            bytes.remove_prefix(20 + size);
        }
        return data;
    }
};

TEST_F(StoredConfiguration, OfAFreshComponent) {
    EXPECT_EQ(
        written(),
        bytes(kept + "2e 00 00 00 'artist;title;album;tracknumber;genre;disc;date'" + input
              + "16 00 00 00 '%tracknumber%. %title%'" + guess
              + "21 00 00 00 '%tracknumber%. %artist% - %title%'" + format
              + "12 00 00 00 '%artist% - %title%'" + guesses + "00 00 00 00" + formats + "00 00 00 00" + names
              + "44 00 00 00 'ARTIST\nTITLE\nALBUM\nGENRE\nTRACKNUMBER\nCOMPOSER\nDATE\nCOMMENT\nPERFORMER'"
              + album + "00 00 00 00" + placement
              + "18 00 00 00 ff ff ff ff ff ff ff ff 00 00 00 80 00 00 00 80 00 00 00 00 00 00 00 00"
              + library + "04 00 00 00 00 00 00 00" + close + "04 00 00 00 00 00 00 00" + threshold
              + "08 00 00 00 64 00 00 00 00 00 00 00"));
}

TEST_F(StoredConfiguration, IsReadRecordByRecord) {
    const std::string truncation = "Unexpected end of file";
    const std::string kept_a = kept + "01 00 00 00 'a'";
    const std::string script = "01 00 00 00 's' 00 00 00 00";
    const struct {
        const char* name;
        std::string stream;
        std::string changed;
        std::string failure = "";
    } rows[] = {
        {"empty", "", ""},
        {"1 byte left", kept_a + "51", "kept='a'"},
        {"15 bytes left", kept_a + format.substr(0, 45), "kept='a'"},
        {"unknown", unknown + "03 00 00 00 'xyz'" + kept_a, "kept='a'"},
        {"unknown and empty", unknown + "00 00 00 00" + kept_a, "kept='a'"},
        {"text of size 0", kept + "00 00 00 00", "kept=''"},
        {"text with NUL", kept + "05 00 00 00 'ab' 00 'cd'", "kept='ab'"},
        {"text beginning with NUL", kept + "03 00 00 00 00 'cd'", "kept=''"},
        {"text not UTF-8", kept + "02 00 00 00 ff c3", "kept=ff c3"},
        {"in another order",
         threshold + "08 00 00 00 ff ff ff ff ff ff ff ff" + kept_a + album + "01 00 00 00 'b'",
         "kept='a'; album='b'; threshold=ff ff ff ff ff ff ff ff"},
        {"twice", kept + "01 00 00 00 'b'" + kept_a, "kept='a'"},
        {"rest of an integer's record", close + "06 00 00 00 01 00 00 00 99 99" + kept_a,
         "kept='a'; close=01 00 00 00"},
        {"negative integers",
         placement + "18 00 00 00" +
             [] {
                 std::string numbers;
                 for (int i = 0; i < 6; ++i)
                     numbers += "fe ff ff ff ";
                 return numbers;
             }(),
         "placement=fe ff ff ff fe ff ff ff fe ff ff ff fe ff ff ff fe ff ff ff fe ff ff ff"},
        {"a library", library + "0d 00 00 00 01 00 00 00" + script + kept_a,
         "kept='a'; library=01 00 00 00 01 00 00 00 73 00 00 00 00"},
        {"size cut", kept_a + album + "01 00", "kept='a'", truncation},
        {"text cut", kept_a + album + "05 00 00 00 'abc'", "kept='a'", truncation},
        {"unknown cut", kept_a + unknown + "ff ff ff ff 'abc'", "kept='a'", truncation},
        {"text of a size that cannot be", kept_a + album + "ff ff ff ff 'abc'", "kept='a'", truncation},
        {"integer too short", kept_a + close + "03 00 00 00 01 00 00 00" + album + "01 00 00 00 'b'",
         "kept='a'", truncation},
        {"placement too short", placement + "14 00 00 00" + std::string(60, '1'), "", truncation},
        {"library too short", library + "0d 00 00 00 02 00 00 00" + script + kept_a,
         "library=01 00 00 00 01 00 00 00 73 00 00 00 00", truncation},
    };
    for (const auto& row : rows) {
        read(initial());
        EXPECT_EQ(test::failure_of([&] { read(bytes(row.stream)); }), row.failure) << row.name;
        EXPECT_EQ(changed(), row.changed) << row.name;
    }
}

TEST_F(StoredConfiguration, IsReadAgainAsWritten) {
    const std::string long_text(70000, 'x');
    read(bytes(kept + "70 11 01 00") + long_text + bytes(names + "02 00 00 00 'A\n'"));
    const std::string bytes_before = written();
    read(initial());
    EXPECT_EQ(changed(), "");
    read(bytes_before);
    EXPECT_EQ(changed(), "kept='" + long_text + "'; names=41 0a");
}

TEST_F(StoredConfiguration, IsAborted) {
    vantaro::MemoryWriter writer;
    vantaro::MemoryReader reader(initial());
    EXPECT_EQ(test::failure_of([&] { client_.get_config(writer, test::abort_now); }), "User abort");
    EXPECT_EQ(test::failure_of([&] { client_.set_config(reader, test::abort_now); }), "User abort");
}

} // namespace
} // namespace quorvex
