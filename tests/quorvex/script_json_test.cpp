#include "quorvex/script_json.h"

#include "tests/actions/kinds_fixture.h"

#include <gmock/gmock.h>

namespace quorvex::command {
namespace {

using namespace vantaro;
using Json = nlohmann::ordered_json;

class ScriptJson : public quorvex::test::Kinds {
protected:
    static Guid kind_of(std::string_view name) {
        for (const ActionMenuEntry& entry : action_menu())
            if (entry.name == name)
                return entry.type->get_guid();
        throw std::invalid_argument(std::string(name));
    }
    /// The one action of a script in the text form, on one line.
    static std::string written(const StoredAction& action) {
        const Json root = Json::parse(script_to_json({"", {action}}, NotUtf8::replace));
        EXPECT_EQ(root.size(), 1U) << "a script without a name shows none";
        return root["actions"][0].dump();
    }
    static StoredAction read(const std::string& action) {
        const StoredScript script = script_from_json("{\"actions\": [" + action + "]}");
        EXPECT_EQ(script.actions.size(), 1U);
        return script.actions.at(0);
    }
    static std::string failure(const std::string& text) {
        return quorvex::test::failure_of([&] { script_from_json(text); });
    }
};

TEST_F(ScriptJson, IsWrittenAndReadForEveryKind) {
    const struct {
        const char* kind;
        const char* parameters;
        const char* json;
    } rows[] = {
        {"Add value...", "A\nb", R"({"kind":"Add value","field":"A","value":"b"})"},
        {"Auto track number...", "%album%\n", R"({"kind":"Auto track number","pattern":"%album%\n"})"},
        {"Copy values between fields...", "A\nB",
         R"({"kind":"Copy values between fields","from":"A","to":"B"})"},
        {"Embed cuesheet", "", R"({"kind":"Embed cuesheet"})"},
        {"Format value from other fields...", "A\n$if(%b%,'c')",
         R"--({"kind":"Format value from other fields","field":"A","pattern":"$if(%b%,'c')"})--"},
        {"Guess values from file names...", "%a%\\%b%",
         R"({"kind":"Guess values from file names","pattern":"%a%\\%b%"})"},
        {"Guess values from other fields...", "%a%\n%b%\n%c%",
         R"({"kind":"Guess values from other fields","pattern":"%a%","source":"%b%\n%c%"})"},
        {"Input data (one line per track)...", "%a%\nx\r\n\ny",
         R"--({"kind":"Input data (one line per track)","pattern":"%a%","data":"x\r\n\ny"})--"},
        {"Remove all fields", "", R"({"kind":"Remove all fields"})"},
        {"Remove all fields except for...", "a;b",
         R"({"kind":"Remove all fields except for","fields":"a;b"})"},
        {"Remove field...", "A B", R"({"kind":"Remove field","field":"A B"})"},
        {"Remove values...", "A\na;b\nc",
         R"({"kind":"Remove values","field":"A","values":"a;b","case-sensitive":true})"},
        {"Replace value...", "A\n\"\n\t\nn",
         R"({"kind":"Replace value","field":"A","old":"\"","new":"\t","case-sensitive":false})"},
        {"Set value...", "A\n", R"({"kind":"Set value","field":"A","value":""})"},
        {"Split field by separator...", "A\n, ",
         R"({"kind":"Split field by separator","field":"A","separator":", "})"},
        {"Split multiple artist fields", "", R"({"kind":"Split multiple artist fields"})"},
    };
    EXPECT_EQ(action_menu().size(), std::size(rows));
    StoredScript all{"all of them", {}};
    for (const auto& row : rows) {
        const StoredAction stored{kind_of(row.kind), row.parameters};
        EXPECT_EQ(written(stored), row.json);
        EXPECT_EQ(read(row.json), stored) << row.json;
        EXPECT_EQ(read("{\"parameters\": " + Json(row.parameters).dump() + ", \"kind\": \""
                       + to_text(stored.kind) + "\"}"),
                  stored)
            << row.kind;
        all.actions.push_back(stored);
    }
    EXPECT_EQ(script_from_json(script_to_json(all, NotUtf8::replace)), all);
    EXPECT_EQ(script_from_json(" {\"actions\": []} "), StoredScript());
}

TEST_F(ScriptJson, TakesWhatPeopleWrite) {
    const Guid remove_values = kind_of("Remove values...");
    const StoredAction genre{kind_of("Set value..."), "GENRE\nJazz"};
    for (const char* kind :
         {"Set value", "set VALUE", "Set value...", "{C3DCFE2F-16F4-48B9-B0C4-961470019784}"})
        EXPECT_EQ(read(std::string(R"({"value": "Jazz", "field": "GENRE", "kind": ")") + kind + "\"}"), genre)
            << kind;
    EXPECT_EQ(read(R"({"kind": "Remove values", "values": "a", "field": "B"})"),
              (StoredAction{remove_values, "B\na\nn"}))
        << "letter case does not count";
    // What nobody here knows is kept for those who do.
    constexpr const char* unknown =
        R"({"kind":"{7D6E0F53-1C0B-4B0A-9E0E-3C1F55A2B1D4}","parameters":"x\ny"})";
    EXPECT_EQ(written(read(unknown)), unknown);
    EXPECT_EQ(read(unknown).parameters, "x\ny");
    // So is what its kind finds malformed.
    EXPECT_EQ(written({genre.kind, "GENRE"}), R"({"kind":"Set value","parameters":"GENRE"})");
    EXPECT_EQ(written({remove_values, "A\nb\nx"}), R"({"kind":"Remove values","parameters":"A\nb\nx"})");
}

TEST_F(ScriptJson, SaysWhatIsWrongAndWhere) {
    const auto in_action = [](const char* action) { return std::string("{\"actions\": [") + action + "]}"; };
    constexpr const char* no_kind =
        "action 1: \"kind\" is missing, or is no text; it names a kind of action, as \"quorvex kinds\" lists "
        "them";
    constexpr const char* good = R"({"kind": "Remove all fields"}, )";
    const struct {
        std::string text;
        const char* failure;
    } rows[] = {
        {"[]", "script: it is no object with a list of \"actions\""},
        {"{}", "script: it is no object with a list of \"actions\""},
        {R"({"actions": {}})", "script: it is no object with a list of \"actions\""},
        {R"({"actions": [], "nmae": "x"})",
         "script: \"nmae\" has no place here; a script has \"actions\", and may have a text as \"name\""},
        {R"({"actions": [], "name": 5})",
         "script: \"name\" has no place here; a script has \"actions\", and may have a text as \"name\""},
        {in_action("5"), "action 1: it is no object"},
        {in_action("{}"), no_kind},
        {in_action(R"({"kind": 5})"), no_kind},
        {in_action((good + std::string(R"({"kind": "Jump"})")).c_str()),
         "action 2: there is no kind of action \"Jump\"; \"quorvex kinds\" lists them"},
        {in_action(R"({"kind": "Set value", "feild": "x"})"),
         "action 1 (Set value): this kind has no setting \"feild\"; it has \"field\", \"value\""},
        {in_action(R"({"kind": "Remove all fields", "field": "x"})"),
         "action 1 (Remove all fields): this kind has no setting \"field\""},
        {in_action(R"({"kind": "Remove values", "field": "A"})"),
         "action 1 (Remove values): \"values\" is missing; this kind needs \"field\", \"values\", "
         "\"case-sensitive\""},
        {in_action(R"({"kind": "Set value", "field": 5})"), "action 1 (Set value): \"field\" is no text"},
        {in_action(R"({"kind": "Set value", "value": "a\nb"})"),
         "action 1 (Set value): \"value\" holds a line break, which has no place there"},
        {in_action(R"({"kind": "Set value", "value": "a\u0000b"})"),
         "action 1 (Set value): \"value\" holds a NUL character"},
        {in_action(R"({"kind": "Remove values", "case-sensitive": "yes"})"),
         "action 1 (Remove values): \"case-sensitive\" is neither true nor false"},
        {in_action(R"({"kind": "Set value", "parameters": "GENRE"})"),
         "action 1 (Set value): the kind does not accept these settings"},
        {in_action(R"({"kind": "Set value", "parameters": "A\nb", "field": "C"})"),
         "action 1 (Set value): \"field\" has no place beside \"parameters\"; without it, this kind has "
         "\"field\", \"value\""},
        {in_action(R"({"kind": "{7D6E0F53-1C0B-4B0A-9E0E-3C1F55A2B1D4}", "x": "y"})"),
         "action 1 ({7D6E0F53-1C0B-4B0A-9E0E-3C1F55A2B1D4}): \"x\" has no place beside \"parameters\""},
        {in_action(R"({"kind": "Set value", "parameters": 5})"),
         "action 1 (Set value): \"parameters\" is no text"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(failure(row.text), row.failure) << row.text;
    using testing::StartsWith;
    EXPECT_THAT(failure(""), StartsWith("line 1, column 1: "));
    EXPECT_THAT(failure("{\n  \"actions\": [\n    {,}\n  ]\n}"), StartsWith("line 3, column 6: "));
    EXPECT_THAT(failure("{\"actions\": []} x"), StartsWith("line 1, column 17: "));
    EXPECT_THAT(failure("{\"actions\": [\"\xFF\"]}"), StartsWith("line 1, column 15: "));
    EXPECT_THAT(failure(quorvex::test::repeat("[", 1'000'000)), StartsWith("line 1, column 1000001: "));
    EXPECT_NE(failure(in_action(
                  (quorvex::test::repeat("[", 200'000) + quorvex::test::repeat("]", 200'000)).c_str())),
              "");
    // A name ends where the stored form would end it.
    EXPECT_EQ(failure(R"({"name": "a\u0000b", "actions": []})"), "script: \"name\" holds a NUL character");
}

} // namespace
} // namespace quorvex::command
