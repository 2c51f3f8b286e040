#include "script/script_library.h"

#include "host/api/configuration_storage.h"
#include "host/api/memory_stream.h"
#include "script/script_stream.h"
#include "tests/support/failures.h"
#include "tests/support/fake_actions.h"
#include "tests/support/fake_host.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;
using test::kind;

/// Others get to store something just before a change.
class SharedStorage final : public HeapService<ConfigurationStorage> {
public:
    bool change(MainThreadCall* change) override {
        if (std::exchange(is_changing_, true)) {
            change->run();
            return true;
        }
        if (meanwhile)
            std::exchange(meanwhile, {})();
        change->run();
        is_changing_ = false;
        ++stored;
        return true;
    }
    std::function<void()> meanwhile;
    int stored = 0;

private:
    bool is_changing_ = false;
};

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

TEST_F(Library, LosesNothingThatOthersStoreMeanwhile) {
    const auto storage = make_service<SharedStorage>();
    host_.offer<ConfigurationStorage>(storage);
    ScriptLibrary& library = script_library();
    const auto others = [&](const auto&... scripts) {
        storage->meanwhile = [=, &library] {
            MemoryWriter writer;
            write_script_list(writer, {scripts...}, test::run_on);
            MemoryReader reader(writer.bytes());
            library.read(reader, 0, test::run_on);
        };
    };
    const auto stored = [](const char* name, const char* text) {
        return StoredScript{name, {{kind(1), text}}};
    };
    others(stored("theirs", "t"));
    EXPECT_TRUE(library.store_script("ours", script({"o"})));
    EXPECT_EQ(text_of_library(), "theirs(t) ours(o) ");
    EXPECT_EQ(storage->stored, 1) << "on the disk at once";

    others(stored("theirs", "t"), stored("ours", "o"), stored("NEW", "n1"), stored("new (2)", "x"));
    EXPECT_TRUE(library.store_script("New", script({"n2"}))) << "nobody has been asked about theirs";
    EXPECT_EQ(text_of_library(), "theirs(t) ours(o) NEW (3)(n1) new (2)(x) New(n2) ");

    others(stored("theirs", "t"), stored("ours", "o3"), stored("[last used]", "l1"));
    EXPECT_FALSE(library.store_script("OURS", script({"o4"})));
    EXPECT_EQ(text_of_library(), "theirs(t) ours (2)(o3) [last used](l1) OURS(o4) ");
    others(stored("[last used]", "l2"), stored("same", "s"));
    EXPECT_FALSE(library.store_script(last_used_script, script({"l3"})));
    EXPECT_TRUE(library.find_script("same"));
    others(stored("a", "1"), stored("same", "s"));
    EXPECT_FALSE(library.store_script("Same", script({"s"})));
    EXPECT_EQ(text_of_library(), "a(1) Same(s) ");

    others(stored("b", "1"), stored("a", "1"), stored("Same", "s"));
    library.delete_script(0);
    EXPECT_EQ(text_of_library(), "b(1) Same(s) ") << "what has moved is found";
    others(stored("b", "2"), stored("Same", "s"));
    library.delete_script(0);
    EXPECT_EQ(text_of_library(), "b(2) Same(s) ") << "theirs is not what was to be deleted";
    others(stored("Same", "s"));
    library.delete_script(0);
    EXPECT_EQ(text_of_library(), "Same(s) ") << "they have deleted it";
    host_.withdraw_all();
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
