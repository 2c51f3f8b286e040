#include "actions/fixed_value.h"

#include "script/field_name.h"
#include "tests/support/failures.h"
#include "tests/support/fake_host.h"
#include "tests/support/interface_slots.h"
#include "tests/support/short_forms.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;
using test::repeat;

TypeOf<SetValue> set_type;
TypeOf<AddValue> add_type;
ActionType* const both[] = {&set_type, &add_type};

class FixedValue : public test::WithHost {
protected:
    Ref<Action> from_text(ActionType& type, const std::string& text) {
        return Ref<Action>::adopt(type.create_from_text(notify_.get(), text.c_str()));
    }
    static std::string parameters(Action& action) {
        return text_of([&](TextSink& out) { action.get_parameter_text(out); });
    }
    static std::string description(Action& action) {
        return text_of([&](TextSink& out) { action.get_description(out); });
    }
};

TEST_F(FixedValue, KindsDifferInTheirConstants) {
    std::string text;
    for (ActionType* type : both) {
        const auto action = Ref<Action>::adopt(type->create(notify_.get()));
        EXPECT_EQ(action->get_guid(), type->get_guid());
        text += to_text(type->get_guid()) + text_of([&](TextSink& out) { type->get_name(out); }) + '|'
                + description(*action) + '|' + parameters(*action) + '|'
                + (action->has_settings() ? "has settings" : "")
                + (action->uses_group_key() ? ", groups" : "") + '|'
                + (static_cast<FixedValueInterface&>(*action).adds() ? "adds" : "sets") + '\n';
        EXPECT_EQ(action->get_group_key(&tag_io_.track("a")), Guid());
        EXPECT_EQ(test::references(*action), 1U);
    }
    EXPECT_EQ(text,
              "{C3DCFE2F-16F4-48B9-B0C4-961470019784}Set value...|Set \"\" = \"\"|\n|has settings|sets\n"
              "{A59C4F2C-223F-413C-A62B-8BB363DE7AB0}Add value...|Add \"\" = \"\"|\n|has settings|adds\n");
    EXPECT_EQ(test::references(*notify_), 1U) << "the notify is not kept";
}

TEST_F(FixedValue, IsGivenToTheField) {
    const struct {
        const char* parameters;
        const char* before;
        const char* set;
        const char* added;
    } rows[] = {
        {"A\nv", "A=[x][y][z] B=[b]", "A=[v] B=[b]", "A=[x][y][z][v] B=[b]"},
        {"A\nv", "B=[b]", "B=[b] A=[v]", "B=[b] A=[v]"},
        {"artist\nv", "Artist=[v]", "Artist=[v]", "Artist=[v][v]"},
        {"A\n", "A=[x]", "A=[]", "A=[x][]"},
        {"A\n a;b\\c\r|%x% ", "", "A=[ a;b\\c\r|%x% ]", "A=[ a;b\\c\r|%x% ]"},
        {"\nv", "A=[x]", "A=[x]", "A=[x]"},
        {"A=\nv", "A=[x]", "A=[x]", "A=[x]"},
        {"%A%\nv", "A=[x]", "A=[x]", "A=[x]"},
        {"\u00E9\nv", "A=[x]", "A=[x]", "A=[x]"},
    };
    for (const auto& row : rows) {
        TrackInfoRecord set = test::tags(row.before);
        TrackInfoRecord added = test::tags(row.before);
        from_text(set_type, row.parameters)->apply(&tag_io_.track("a"), set, 0, 1);
        from_text(add_type, row.parameters)->apply(&tag_io_.track("a"), added, 5, 9);
        EXPECT_EQ(test::tags_text(set), row.set) << row.parameters;
        EXPECT_EQ(test::tags_text(added), row.added) << row.parameters;
    }
}

TEST_F(FixedValue, IsDescribedShortened) {
    const struct {
        std::string value;
        std::string shown;
    } rows[] = {
        {"\"", "\""},
        {repeat("x", 255), repeat("x", 255)},
        {repeat("x", 256), repeat("x", 256) + " (...)"},
        {repeat("\u00E9", 255), repeat("\u00E9", 255)},
        {repeat("\U0001F3B5", 300), repeat("\U0001F3B5", 256) + " (...)"},
        {"a\rb", "a (...)"},
        {"\r" + repeat("x", 300), " (...)"},
        {repeat("x", 256) + "\rb", repeat("x", 256) + " (...)"},
    };
    for (const auto& [value, shown] : rows) {
        const std::string text = "field\n" + value;
        EXPECT_EQ(description(*from_text(set_type, text)), "Set \"field\" = \"" + shown + '"');
        EXPECT_EQ(description(*from_text(add_type, text)), "Add \"field\" = \"" + shown + '"');
    }
}

TEST_F(FixedValue, ParameterTextIsTwoLines) {
    for (ActionType* type : both) {
        for (const char* text : {"A\nb", "\n", "A\n", "\nb", "=\nb\r|"})
            EXPECT_EQ(parameters(*from_text(*type, text)), text);
        for (const char* text : {"", "A", "A\nb\n", "\n\n", "A\nb\nc"})
            EXPECT_EQ(test::failure_of([&] { from_text(*type, text); }),
                      "Unsupported format or corrupted file")
                << text;
    }
    // What is typed on two lines is kept as one, from then on in the settings too.
    const auto typed = make_service<SetValue>();
    typed->accept({"A\nB", "x\r\ny\n"});
    EXPECT_EQ(parameters(*typed), "A|B\nx\r|y|");
    EXPECT_EQ(typed->texts()[0] + '/' + typed->texts()[1], "A|B/x\r|y|");
}

TEST_F(FixedValue, DialogIsCancelledWhereThereAreNone) {
    const auto action = from_text(set_type, "A\nb");
    action->create_settings_dialog(nullptr, notify_.get());
    EXPECT_EQ(host_.take_events(), "notified 0");
}

TEST(FieldName, IsPrintableAsciiWithoutMarks) {
    for (const char* name : {"A", " ", "~", "a b", "!\"#$&'()*+,-./:;?@[\\]^_`{|}"})
        EXPECT_TRUE(is_valid_field_name(name)) << name;
    for (const char* name : {"", "A=", "%A", "<", "A>B", "\x1F", "A\n", "\x7F", "\x80", "\u00E9"})
        EXPECT_FALSE(is_valid_field_name(name)) << name;
}

// The dialog of the two kinds asks for the operation behind those of every action.
TEST(InterfaceSlots, OfFixedValues) {
    SERVICE(FixedValueInterface, "{ACC7251A-332A-4CD8-912D-693DD854C5DC}", &I::has_settings,
            &I::create_settings_dialog, &I::get_description, &I::get_parameter_text, &I::apply, &I::get_guid,
            &I::uses_group_key, &I::get_group_key, &I::adds);
}

} // namespace
} // namespace quorvex
