#include "script/script_stream.h"

#include "script/action_registry.h"
#include "script/script_library.h"
#include "tests/support/failures.h"
#include "tests/support/fake_actions.h"
#include "tests/support/fake_host.h"
#include "tests/support/memory_files.h"
#include "tests/support/short_forms.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;
using test::bytes;
using test::failure_of;
using test::run_on;

const std::string truncation = "Unexpected end of file";
const std::string kind_1 = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 ";
const std::string kind_2 = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 02 ";
const std::string magic = "ec b0 58 0c 9f 7a 92 48 be b0 52 84 5b eb 0c 4b ";

constexpr Guid remove_field = guid("{C3BDD536-670A-4AFE-9C7C-BD72BAE9AA89}");
constexpr Guid remove_all_fields = guid("{ADF2441C-9F27-4E39-BCE5-323AC91F9975}");
const StoredScript example{"", {{remove_field, "COMMENT"}, {remove_all_fields, ""}}};
const std::string example_file =
    magic
    + "00 00 00 00 02 00 00 00 "
      "36 d5 bd c3 0a 67 fe 4a 9c 7c bd 72 ba e9 aa 89 07 00 00 00 43 4f 4d 4d 45 4e 54 "
      "1c 44 f2 ad 27 9f 39 4e bc e5 32 3a c9 1f 99 75 00 00 00 00";

/// "name: text@kind, text@kind", kinds by their last byte.
std::string script_text(const StoredScript& script) {
    std::string text = script.name + ":";
    for (const StoredAction& action : script.actions)
        text += ' ' + action.parameters + '@' + std::to_string(action.kind.bytes.back());
    return text;
}

std::string written(const StoredScript& script) {
    MemoryWriter writer;
    write_script(writer, script, run_on);
    return writer.bytes();
}

TEST(ScriptRecord, IsWrittenByteForByte) {
    const struct {
        const char* name;
        StoredScript script;
        std::string bytes;
    } rows[] = {
        {"no actions", {"[last used]", {}}, "0b 00 00 00 '[last used]' 00 00 00 00"},
        {"actions",
         {"s", {{test::kind(1), "A\nb"}, {test::kind(2), ""}}},
         "01 00 00 00 's' 02 00 00 00" + kind_1 + "03 00 00 00 'A\nb'" + kind_2 + "00 00 00 00"},
        {"NUL bytes",
         {std::string("n\0x", 3), {{test::kind(1), std::string("p\0\0", 3)}}},
         "01 00 00 00 'n' 01 00 00 00" + kind_1 + "01 00 00 00 'p'"},
        {"bytes, not characters", {"\u00E9\xFF", {}}, "03 00 00 00 c3 a9 ff 00 00 00 00"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(written(row.script), bytes(row.bytes)) << row.name;
}

TEST(ScriptRecord, ReplacesItsTarget) {
    const struct {
        const char* name;
        std::string bytes;
        const char* script;
        std::string failure = "";
    } rows[] = {
        {"whole", "01 00 00 00 's' 02 00 00 00" + kind_2 + "01 00 00 00 'a'" + kind_1 + "00 00 00 00",
         "s: a@2 @1"},
        {"NUL bytes", "03 00 00 00 'n' 00 'x' 01 00 00 00" + kind_1 + "02 00 00 00 00 'x'", "n: @1"},
        {"count cut", "01 00 00 00 's' 01 00", "s:", truncation},
        {"kind cut", "01 00 00 00 's' 01 00 00 00 aa bb", "s:", truncation},
        {"second text cut", "00 00 00 00 02 00 00 00" + kind_1 + "00 00 00 00" + kind_2 + "05 00 00 00 'abc'",
         ": @1", truncation},
        {"count that cannot be", "00 00 00 00 ff ff ff ff" + kind_1 + "00 00 00 00", ": @1", truncation},
        {"empty stream", "", "old:", truncation},
    };
    for (const auto& row : rows) {
        StoredScript target{"old", {{test::kind(9), "old"}}};
        const std::string stream = bytes(row.bytes);
        MemoryReader reader(stream);
        EXPECT_EQ(failure_of([&] { read_script(reader, target, run_on); }), row.failure) << row.name;
        EXPECT_EQ(script_text(target), row.script) << row.name;
    }
}

/// Tells how much it was asked for at once, which is what the reader had made room for.
class Measured final : public StreamReader {
public:
    explicit Measured(std::string_view bytes) : reader_(bytes) {}
    std::size_t read(void* buffer, std::size_t count, AbortFlag& abort) override {
        steps += std::to_string(count) + ' ';
        return reader_.read(buffer, count, abort);
    }
    std::string steps;

private:
    MemoryReader reader_;
};

TEST(ScriptRecord, MakesNoRoomForBytesThatAreNotThere) {
    const struct {
        const char* length;
        std::size_t bytes;
        const char* steps;
        std::string failure = "";
    } rows[] = {
        {"ff ff 00 00", 65535, "4 65535 4 "},
        {"00 00 01 00", 65536, "4 65536 4 "},
        {"01 00 01 00", 65537, "4 65536 1 4 "},
        {"00 00 04 00", 262144, "4 65536 65536 131072 4 "},
        {"01 00 01 00", 65536, "4 65536 1 ", truncation},
        {"ff ff ff ff", 10, "4 65536 ", truncation},
        {"ff ff ff ff", 200000, "4 65536 65536 131072 ", truncation},
    };
    for (const auto& row : rows) {
        std::string stream = bytes(row.length);
        for (std::size_t i = 0; i < row.bytes; ++i)
            stream += static_cast<char>('a' + i % 23);
        const std::string name = stream.substr(4);
        if (row.failure.empty())
            stream += bytes("00 00 00 00");
        Measured reader(stream);
        StoredScript script;
        EXPECT_EQ(failure_of([&] { read_script(reader, script, run_on); }), row.failure) << row.length;
        EXPECT_EQ(reader.steps, row.steps) << row.length << " of " << row.bytes;
        EXPECT_TRUE(!row.failure.empty() || script.name == name) << row.length;
    }
}

ScriptLibrary library(setting::script_library);

TEST(ScriptLibraryPayload, IsReadAndWritten) {
    const auto read = [](const std::string& payload) {
        MemoryReader reader(payload);
        return failure_of([&] { script_library().read(reader, 0, run_on); });
    };
    const auto write = [] {
        MemoryWriter writer;
        script_library().write(writer, run_on);
        return writer.bytes();
    };
    EXPECT_EQ(&script_library(), &library);
    EXPECT_EQ(read(bytes("00 00 00 00")), "");
    EXPECT_EQ(write(), bytes("00 00 00 00"));
    const std::string two = bytes("02 00 00 00" + ("01 00 00 00 'a' 01 00 00 00" + kind_1) + "01 00 00 00 'x'"
                                  + "01 00 00 00 'A' 00 00 00 00");
    EXPECT_EQ(read(two), "");
    EXPECT_EQ(write(), two);
    EXPECT_EQ(library.find_script("A"), 0U) << "names are taken as they are; the first is found";
    EXPECT_EQ(library.find_script(""), std::nullopt);
    EXPECT_EQ(read(bytes("03 00 00 00 02 00 00 00 'b\u00E9'")), truncation);
    EXPECT_TRUE(library.scripts().empty());
    EXPECT_EQ(read(bytes("02 00 00 00 03 00 00 00 'b\u00E9' 00 00 00 00 01 00")), truncation);
    EXPECT_EQ(library.scripts().size(), 1U) << "the scripts before the failure are there";
    EXPECT_EQ(library.find_script("B\u00C9"), 0U);
}

class ScriptFile : public test::WithHost {
protected:
    ScriptFile() { host_.offer<FileSystem>(files_); }
    std::string read(const std::string& content) {
        files_->content["mem:a"] = content;
        return failure_of([&] { script_ = read_script_file("mem:a", run_on); });
    }

    const Ref<test::MemoryFiles> files_ = make_service<test::MemoryFiles>();
    StoredScript script_;
};

TEST_F(ScriptFile, IsWrittenByteForByte) {
    write_script_file("mem:\xFF.qvx", example, run_on);
    EXPECT_EQ(files_->content["mem:\xFF.qvx"], bytes(example_file));
    EXPECT_EQ(bytes(example_file).size(), 71U);
    write_script_file("mem:\xFF.qvx", {}, run_on);
    EXPECT_EQ(files_->content["mem:\xFF.qvx"], bytes(magic + "00 00 00 00 00 00 00 00"));
}

TEST_F(ScriptFile, IsReadWhateverItsKinds) {
    for (const char* trailing : {"", "'more'"}) {
        EXPECT_EQ(read(bytes(example_file + trailing)), "");
        EXPECT_EQ(script_, example);
    }
    host_.offer<ActionType>(make_service<test::FakeType>(remove_all_fields, "known"));
    Script live;
    EXPECT_FALSE(instantiate(script_, *notify_, live));
    ASSERT_EQ(live.size(), 1U);
    EXPECT_EQ(live[0]->get_guid(), remove_all_fields);
}

TEST_F(ScriptFile, IsRefused) {
    const std::string unsupported = "Unsupported format or corrupted file";
    EXPECT_EQ(read(bytes(kind_1 + "00 00 00 00 00 00 00 00")), unsupported);
    EXPECT_EQ(read(bytes("ec b0 58 0c 9f 7a 92 48 be b0 52 84 5b eb 0c 4c 00 00 00 00 00 00 00 00")),
              unsupported);
    EXPECT_EQ(read(bytes(magic).substr(0, 15)), truncation);
    EXPECT_EQ(read(""), truncation);
    EXPECT_EQ(read(bytes(example_file).substr(0, 70)), truncation);
    EXPECT_EQ(failure_of([] { read_script_file("mem:none", run_on); }), "File not found");
    EXPECT_EQ(failure_of([] { write_script_file("disk:a", {}, run_on); }), "Invalid path");
    EXPECT_EQ(failure_of([] { read_script_file("mem:a", test::abort_now); }), "User abort");
    EXPECT_EQ(failure_of([] { write_script_file("mem:a", {}, test::abort_now); }), "User abort");
}

} // namespace
} // namespace quorvex
