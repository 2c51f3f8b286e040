#include "script/script_library.h"

#include "host/api/memory_stream.h"
#include "tests/support/failures.h"
#include "tests/support/fake_actions.h"
#include "tests/support/fake_host.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;
using test::kind;

/// Names and texts: "Rock(a b) [last used]() ".
std::string text_of_library() {
    std::string text;
    for (const StoredScript& script : script_library().scripts()) {
        text += script.name + '(';
        for (const StoredAction& action : script.actions)
            text += (text.ends_with('(') ? "" : " ") + action.parameters;
        text += ") ";
    }
    return text;
}

class Library : public test::WithHost {
protected:
    Library() { clear(); }
    ~Library() override { clear(); }

    static void clear() {
        while (!script_library().scripts().empty())
            script_library().delete_script(0);
    }
    static Script script(std::initializer_list<const char*> texts) {
        Script actions;
        for (const char* text : texts)
            actions.push_back(make_service<test::FakeAction>(kind(1), text));
        return actions;
    }
};

TEST_F(Library, StoresUnderNamesWithoutRegardToCase) {
    ScriptLibrary& library = script_library();
    EXPECT_TRUE(library.store_script("ROCK", script({"a"})));
    EXPECT_TRUE(library.store_script("Rock ballads", script({"b", "c"})));
    EXPECT_TRUE(library.store_script("Caf\u00E9", script({})));
    EXPECT_FALSE(library.store_script("Rock", script({"d", "e"}))) << "spelled as it was last saved";
    EXPECT_TRUE(library.store_script(last_used_script, script({"f"})));
    EXPECT_TRUE(library.store_script("", script({})));
    EXPECT_EQ(text_of_library(), "Rock(d e) Rock ballads(b c) Caf\u00E9() [last used](f) () ");
    const struct {
        const char* name;
        std::optional<std::size_t> index;
    } rows[] = {{"rock", 0},
                {"ROCK BALLADS", 1},
                {"CAF\u00C9", 2},
                {"[Last Used]", 3},
                {"", 4},
                {"Rock ", std::nullopt},
                {"Roc", std::nullopt},
                {"Cafe", std::nullopt},
                {"\xFF", std::nullopt}};
    for (const auto& row : rows)
        EXPECT_EQ(library.find_script(row.name), row.index) << row.name;

    library.delete_script(0);
    EXPECT_EQ(text_of_library(), "Rock ballads(b c) Caf\u00E9() [last used](f) () ");
    EXPECT_EQ(library.find_script("rock"), std::nullopt);
    EXPECT_FALSE(library.store_script("CAF\u00C9", std::vector{StoredAction{kind(2), "g"}}));
    EXPECT_EQ(library.scripts()[1], (StoredScript{"CAF\u00C9", {{kind(2), "g"}}}));

    MemoryWriter writer;
    library.write(writer, test::run_on);
    const std::string before = text_of_library();
    clear();
    MemoryReader reader(writer.bytes());
    library.read(reader, static_cast<std::uint32_t>(writer.bytes().size()), test::run_on);
    EXPECT_EQ(text_of_library(), before);
}

TEST_F(Library, LoadsBehindWhatIsThere) {
    host_.offer<ActionType>(make_service<test::FakeType>(kind(1), "known"));
    Script live = script({"before"});
    EXPECT_TRUE(load_script({"", {{kind(1), "a"}, {kind(1), "b"}}}, live, *notify_));
    EXPECT_FALSE(load_script({"", {{kind(1), "c"}, {kind(9), "?"}, {kind(1), "d"}}}, live, *notify_));
    script_library().store_script("all", live);
    EXPECT_EQ(text_of_library(), "all(before a b c d) ");
    EXPECT_EQ(script_library().scripts()[0].actions[3].kind, kind(1));
}

} // namespace
} // namespace quorvex
