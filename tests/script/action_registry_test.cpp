#include "script/action_registry.h"

#include "tests/support/failures.h"
#include "tests/support/fake_actions.h"
#include "tests/support/fake_host.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;
using test::kind;

class ActionRegistry : public test::WithHost {
protected:
    /// Names as the menu has them, each with the number of its kind.
    std::string menu_of(std::initializer_list<const char*> names) {
        host_.withdraw_all();
        std::uint8_t number = 0;
        for (const char* name : names)
            offer(number++, name);
        std::string text;
        for (const ActionMenuEntry& entry : action_menu())
            text += entry.name + std::to_string(entry.type->get_guid().bytes.back()) + ' ';
        return text;
    }
    void offer(std::uint8_t number, const char* name) {
        host_.offer<ActionType>(make_service<test::FakeType>(kind(number), name));
    }
    /// The name of the kind that is found; "" for none.
    static std::string found(std::uint8_t number) {
        const auto type = find_action_type(kind(number));
        return type ? text_of([&](TextSink& out) { type->get_name(out); }) : "";
    }
    static std::string found_elsewhere(std::uint8_t number) {
        std::string name;
        std::thread([&] { name = found(number); }).join();
        return name;
    }
    void offer_three() {
        offer(1, "first");
        offer(2, "other");
        offer(1, "last");
        host_.take_events();
    }
};

TEST_F(ActionRegistry, ListsKindsByName) {
    EXPECT_EQ(menu_of({}), "");
    EXPECT_EQ(menu_of({"b", "C", "A"}), "A2 b0 C1 ");
    EXPECT_EQ(menu_of({"Set", "x", "sET"}), "sET2 x1 ") << "the later of equal names";
    EXPECT_EQ(menu_of({"\u00C4", "\u00E4", "z"}), "z2 \u00E41 ");
    EXPECT_EQ(menu_of({"Remove all fields except", "Remove all fields", "Remove"}),
              "Remove2 Remove all fields1 Remove all fields except0 ");
    EXPECT_EQ(menu_of({"\U00010428", "\U00010400"}), "\U000104001 \U000104280 ")
        << "not folded, so not equal";
}

TEST_F(ActionRegistry, FindsKindsByATableBuiltOnce) {
    offer_three();
    EXPECT_EQ(found(1), "last");
    EXPECT_EQ(found(2), "other");
    EXPECT_EQ(found(3), "");
    const int created = host_.created();
    EXPECT_EQ(found(1), "last");
    EXPECT_EQ(found(3), "");
    EXPECT_EQ(host_.created(), created + 1) << "one look-up, one service";
    EXPECT_EQ(found_elsewhere(1), "last") << "the table is there for every thread";
    EXPECT_EQ(host_.created(), created + 2);
}

TEST_F(ActionRegistry, ScansOffTheMainThreadWhileThereIsNoTable) {
    offer_three();
    EXPECT_EQ(found_elsewhere(1), "first");
    EXPECT_EQ(found_elsewhere(2), "other");
    EXPECT_EQ(found_elsewhere(3), "");
    EXPECT_EQ(found(1), "last") << "the scans have left no table";
}

TEST_F(ActionRegistry, BuildsItsTableOnAnyThreadBeforeServicesAreAvailable) {
    offer_three();
    set_services_available(false);
    EXPECT_EQ(found_elsewhere(1), "last");
    set_services_available(true);
    EXPECT_EQ(found_elsewhere(1), "last");
}

TEST_F(ActionRegistry, LeavesOutWhatCannotBeMade) {
    offer(1, "one");
    offer(2, "two");
    const struct {
        const char* name;
        std::vector<StoredAction> stored;
        bool is_complete;
        const char* live;
    } rows[] = {
        {"nothing", {}, true, "before@0 "},
        {"all", {{kind(2), "a"}, {kind(1), ""}}, true, "before@0 a@2 @1 "},
        {"unknown kind", {{kind(1), "a"}, {kind(3), "b"}, {kind(2), "c"}}, false, "before@0 a@1 c@2 "},
        {"malformed text", {{kind(1), "malformed"}, {kind(2), "c"}}, false, "before@0 c@2 "},
        {"text too short", {{kind(1), "c"}, {kind(2), "short"}}, false, "before@0 c@1 "},
        {"all fail", {{kind(3), ""}, {kind(1), "malformed"}}, false, "before@0 "},
    };
    for (const auto& row : rows) {
        Script live{make_service<test::FakeAction>(kind(0), "before")};
        EXPECT_EQ(instantiate(StoredScript{"", row.stored}, *notify_, live), row.is_complete) << row.name;
        const StoredScript stored = store_actions("name", live);
        EXPECT_EQ(stored.name, "name");
        std::string text;
        for (const StoredAction& action : stored.actions)
            text += action.parameters + '@' + std::to_string(action.kind.bytes.back()) + ' ';
        EXPECT_EQ(text, row.live) << row.name;
        for (const Ref<Action>& action : live)
            EXPECT_EQ(test::references(*action), 1U) << row.name;
    }
    EXPECT_EQ(test::references(*notify_), 1U);
    EXPECT_EQ(host_.take_events(), "") << "the notify is handed on, not called";

    Script live;
    EXPECT_THROW(instantiate(StoredScript{"", {{kind(1), "a"}, {kind(1), "large"}}}, *notify_, live),
                 std::bad_alloc);
}

} // namespace
} // namespace quorvex
