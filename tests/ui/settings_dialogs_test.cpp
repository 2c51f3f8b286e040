// Every settings dialog, as a person meets it: what is rejected, what is stored, how it ends.

#include "actions/auto_track_number.h"
#include "actions/copy_values.h"
#include "actions/fixed_value.h"
#include "actions/format_value.h"
#include "actions/guess_values.h"
#include "actions/input_data.h"
#include "actions/remove_fields.h"
#include "actions/remove_values.h"
#include "actions/replace_value.h"
#include "actions/split_field.h"
#include "tests/ui/dialogs_fixture.h"

namespace quorvex {
namespace {

using namespace vantaro;
using test::Dialog;

constexpr const char* bad_name = "Please enter a valid field name.";

struct Typed {
    int control;
    const char* text;
};

/// What is typed in a dialog, and what comes of it.
struct Road {
    const char* name;
    Guid kind;
    const char* parameters; // of the action that is edited
    const char* title;
    std::vector<Typed> shown; // by id, as the dialog opens
    struct Rejection {
        std::vector<Typed> typed;
        int control;
        const char* message;
    };
    std::vector<Rejection> rejected; // one after the other in one dialog
    std::vector<Typed> typed;        // in a fresh dialog
    const char* stored;              // the settings then, "/" between them
    /// The configuration then: "field names|formatting patterns|guess patterns", the newest of each (the
    /// field names up to ARTIST), and the variable that remembers, if one does.
    const char* histories;
    const Guid* remembered = nullptr;
    const char* remembered_text = "";
};

void PrintTo(const Road& road, std::ostream* out) {
    *out << road.name;
}

const Road roads[] = {
    {"SetValue",
     SetValue::kind,
     "Old\nv",
     "Set Value",
     {{1019, "Old"}, {1020, "v"}},
     {{{{1019, ""}}, 1019, bad_name},
      {{{1019, "a=b"}}, 1019, bad_name},
      {{{1019, "\xC3\xA9t\xC3\xA9"}}, 1019, bad_name}},
     {{1019, "My field"}, {1020, "a b"}},
     "MY FIELD/a b",
     "MY FIELD Old||"},
    {"AddValueOfNothing",
     AddValue::kind,
     "A\nv",
     "Add Value",
     {{1019, "A"}, {1020, "v"}},
     {{{{1019, "%"}}, 1019, bad_name}},
     {{1019, "x"}, {1020, ""}},
     "X/",
     "X A||"},
    {"RemoveField",
     RemoveField::kind,
     "GENRE",
     "Select field to remove",
     {{1001, "GENRE"}},
     {{{{1001, ""}}, 1001, bad_name}, {{{1001, "50%"}}, 1001, bad_name}, {{{1001, "<x>"}}, 1001, bad_name}},
     {{1001, "mood"}},
     "MOOD",
     "MOOD GENRE||"},
    {"RemoveAllFieldsExcept",
     RemoveAllFieldsExcept::kind,
     "a",
     "Remove all values except for",
     {{1001, "a"}},
     {{{{1001, ""}}, 1001, "Please enter a list of field names."}},
     {{1001, "x; =Y"}},
     "x; =Y",
     "||",
     &setting::kept_fields_list,
     "x; =Y"},
    {"RemoveValues",
     RemoveValues::kind,
     "A\nv;w\nc",
     "Remove Values",
     {{1001, "A"}, {1002, "v;w"}, {1003, "checked"}},
     {{{{1001, "="}, {1002, ""}}, 1001, bad_name}, {{{1001, "b"}}, 1002, "Please enter values to remove."}},
     {{1001, "b"}, {1002, ";"}, {1003, ""}},
     "B/;/n",
     "B A||"},
    {"ReplaceValue",
     ReplaceValue::kind,
     "A\nv\nw\nn",
     "Replace Value",
     {{1001, "A"}, {1002, "v"}, {1003, "w"}, {1004, ""}},
     {{{{1001, ">"}, {1002, ""}, {1003, ""}}, 1001, bad_name},
      {{{1001, "b"}}, 1002, "Please enter a value."},
      {{{1002, "x"}}, 1003, "Please enter a value."}},
     {{1001, "b"}, {1002, "x"}, {1003, "Y"}, {1004, ""}},
     "B/x/Y/c",
     "B A||"},
    {"FormatValue",
     FormatValue::kind,
     "A\n%b%",
     "Format value",
     {{1024, "A"}, {1008, "%b%"}},
     {{{{1024, ""}}, 1024, bad_name}},
     {{1024, "b"}, {1008, "%Title%"}},
     "B/%Title%",
     "B A|%Title%|",
     &setting::last_formatting_pattern,
     "%Title%"},
    {"FormatValueByNothing",
     FormatValue::kind,
     "A\n%b%",
     "Format value",
     {},
     {},
     {{1008, ""}},
     "A/",
     "A|%b%|",
     &setting::last_formatting_pattern,
     ""},
    {"CopyValues",
     CopyValues::kind,
     "A\nB",
     "Copy values",
     {{1006, "A"}, {1020, "B"}},
     {{{{1006, ""}, {1020, ""}}, 1006, bad_name}, {{{1006, "c"}}, 1020, bad_name}},
     {{1006, "c"}, {1020, "d"}},
     "C/D",
     "D C B A||"},
    {"GuessFromFileName",
     GuessFromFileName::kind,
     "%a%",
     "Guess value from filename",
     {{1007, "%a%"}},
     {{{{1007, ""}}, 1007, "Please enter a pattern."}},
     {{1007, "%b%"}},
     "%b%",
     "||%b%",
     &setting::last_guess_pattern,
     "%b%"},
    {"GuessFromFields",
     GuessFromFields::kind,
     "%a%\n%b%",
     "Guess value from other fields",
     {{1028, "%b%"}, {1008, "%a%"}},
     {{{{1028, ""}, {1008, ""}}, 1028, "Please enter a pattern."},
      {{{1028, "x"}}, 1008, "Please enter a pattern."}},
     {{1028, "%c%"}, {1008, "%d%"}},
     "%d%/%c%",
     "|%c%|%d%",
     &setting::last_guess_pattern,
     "%d%"},
    {"SplitField",
     SplitField::kind,
     "A\n;",
     "Split field by separator",
     {{1024, "A"}, {1023, ";"}},
     {{{{1024, ""}, {1023, ""}}, 1024, bad_name}, {{{1024, "b"}}, 1023, "Please enter a separator string."}},
     {{1024, "b"}, {1023, " / "}},
     "B/ / ",
     "B A||"},
    {"AutoTrackNumber",
     AutoTrackNumber::kind,
     "%album%",
     "Auto Track Number",
     {{1001, "%album%"}},
     {},
     {{1001, ""}},
     "",
     "||",
     &setting::album_separation_pattern,
     ""},
    {"InputData",
     InputData::kind,
     "%a%\nx\r\ny",
     "Input data (one line per track)",
     {{1001, "%a%"}, {1002, "x\ny"}},
     {{{{1001, ""}}, 1001, "Please enter a pattern."}},
     {{1001, "%b%"}, {1002, "z"}},
     "%b%/z",
     "||%b%",
     &setting::last_input_data_scheme,
     "%b%"},
};

class EveryDialog : public test::Dialogs, public testing::WithParamInterface<Road> {
protected:
    /// Of the field names, those before the first that is there from the start.
    static std::string histories() {
        std::string text;
        for (const std::string& name : field_name_history.entries()) {
            if (name == "ARTIST" || name == "GENRE") // GENRE was the name that RemoveField edits
                break;
            text += (text.empty() ? "" : " ") + name;
        }
        if (field_name_history.entries()[1] == "GENRE")
            text += " GENRE";
        for (const DropDownHistory& history : {formatting_pattern_history, guess_pattern_history}) {
            const auto entries = history.entries();
            text += '|' + (entries.empty() ? "" : entries.front());
        }
        return text;
    }
    Dialog open_road() { return open(GetParam().kind, GetParam().parameters); }
    void type_all(const Dialog& dialog) {
        for (const auto& [control, text] : GetParam().typed)
            dialog.type(control, text);
    }
};

TEST_P(EveryDialog, RejectsInputAtItsControl) {
    const Dialog dialog = open_road();
    EXPECT_EQ(dialog.window().windowTitle().toStdString(), GetParam().title);
    for (const auto& [control, text] : GetParam().shown)
        EXPECT_EQ(dialog.text(control), text) << control;
    EXPECT_EQ(dialog.message(), "");
    const std::string before = settings() + written();
    for (const Road::Rejection& rejection : GetParam().rejected) {
        for (const auto& [control, text] : rejection.typed)
            dialog.type(control, text);
        dialog.control<QPushButton>(2).setFocus();
        dialog.press_ok();
        EXPECT_EQ(dialog.message(), std::to_string(rejection.control) + ": " + rejection.message);
        EXPECT_EQ(dialog.focused(), rejection.control);
        EXPECT_TRUE(dialog.is_open());
    }
    EXPECT_EQ(settings() + written(), before) << "nothing is stored";
    EXPECT_EQ(host_.take_events(), "");
}

TEST_P(EveryDialog, StoresOnOk) {
    const Dialog dialog = open_road();
    type_all(dialog);
    QTest::keyClick(&dialog.control(GetParam().typed.front().control), Qt::Key_Enter);
    EXPECT_EQ(host_.take_events(), "notified 1");
    EXPECT_EQ(settings(), GetParam().stored);
    EXPECT_EQ(histories(), GetParam().histories);
    if (GetParam().remembered) {
        EXPECT_EQ(text_setting(*GetParam().remembered).get(), GetParam().remembered_text);
    }
    EXPECT_FALSE(dialog.is_open());
    run_deleted();
    EXPECT_TRUE(dialog.is_gone());
    EXPECT_EQ(test::references(*action_), 1U);
}

TEST_P(EveryDialog, StoresNothingWhenCancelled) {
    const std::function<void(const Dialog&)> ways[] = {
        [](const Dialog& dialog) { dialog.press_cancel(); },
        [](const Dialog& dialog) { QTest::keyClick(&dialog.window(), Qt::Key_Escape); },
        [](const Dialog& dialog) { dialog.window().close(); }};
    for (const auto& leave : ways) {
        const Dialog dialog = open_road();
        type_all(dialog);
        const std::string before = settings() + written();
        leave(dialog);
        EXPECT_EQ(host_.take_events(), "notified 0");
        EXPECT_EQ(settings() + written(), before);
        run_deleted();
        EXPECT_TRUE(dialog.is_gone());
    }
}

TEST_P(EveryDialog, GoesWithItsOwnerInSilence) {
    const Dialog dialog = open_road();
    type_all(dialog);
    const std::string before = settings() + written();
    owner_.reset();
    EXPECT_TRUE(dialog.is_gone());
    EXPECT_EQ(host_.take_events(), "");
    EXPECT_EQ(settings() + written(), before);
    EXPECT_EQ(test::references(*action_), 1U);
    EXPECT_EQ(test::references(*notify_), GetParam().kind == FormatValue::kind ? 2U : 1U);
}

TEST_P(EveryDialog, ReachesEveryControlFromTheKeyboard) {
    const Dialog dialog = open_road();
    std::vector<int> order;
    for (const QWidget* widget : dialog.window().findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        if (widget->objectName().toInt() != 0)
            order.push_back(widget->objectName().toInt());
    std::vector<int> reached{dialog.focused()};
    for (std::size_t i = 1; i < order.size(); ++i) {
        QTest::keyClick(dialog.window().focusWidget(), Qt::Key_Tab);
        reached.push_back(dialog.focused());
    }
    EXPECT_EQ(reached, order);
    for (int id : order)
        if (id > cancel_id && GetParam().kind != RemoveField::kind
            && !dynamic_cast<QCheckBox*>(&dialog.control(id))) {
            EXPECT_FALSE(dialog.control(id).accessibleName().isEmpty()) << id;
        }
}

INSTANTIATE_TEST_SUITE_P(, EveryDialog, testing::ValuesIn(roads),
                         [](const auto& road) { return std::string(road.param.name); });

} // namespace
} // namespace quorvex
