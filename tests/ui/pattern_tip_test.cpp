// What is said of a pattern while it is being typed.

#include "ui/widgets/pattern_tip.h"

#include "actions/auto_track_number.h"
#include "actions/format_value.h"
#include "actions/guess_values.h"
#include "actions/input_data.h"
#include "tests/ui/dialogs_fixture.h"

namespace quorvex {
namespace {

using namespace vantaro;
using test::Dialog;

/// An owner that has a track to try patterns on.
class Desk final : public QWidget, public PatternSampleSource {
public:
    const PatternSample* pattern_sample(ServiceBase&) override { return sample.track ? &sample : nullptr; }
    PatternSample sample;
};

class PatternTipTest : public test::Dialogs {
protected:
    PatternTipTest() {
        auto desk = std::make_unique<Desk>();
        desk_ = desk.get();
        owner_ = std::move(desk);
        owner_->show();
        track_.hold(make_service<core::HeldInfo>(test::tags("ALBUM=[Held]"), FileStats(), false));
        host_.offer<TitleFormatDiagnosis>(Ref<TitleFormatDiagnosis>(&diagnosis_));
        desk_->sample = {Ref<TrackHandle>(&track_), TrackInfoRecord(test::tags("ARTIST=[Ann] ALBUM=[One]")),
                         6, 12};
    }

    /// What the tip says of a dialog when the box has the focus.
    static std::string tip(const Dialog& dialog, int id) {
        dialog.control(id).setFocus();
        QTest::qWait(150);
        return dialog.message();
    }

    Desk* desk_;
    core::TitleFormattingDiagnosis diagnosis_;
};

TEST_F(PatternTipTest, SaysWhatAPatternGives) {
    const struct {
        Guid kind;
        const char* parameters;
        std::vector<std::pair<int, const char*>> typed;
        const char* tip;
    } rows[] = {
        {FormatValue::kind,
         "\n",
         {{1008, "%list_index%/%list_total% %artist%[ %b%]"}},
         "1008: First track: 07/12 Ann"},
        {FormatValue::kind, "\n", {{1008, "[%b%]"}}, "1008: First track: (empty)"},
        {FormatValue::kind,
         "\n",
         {{1008, "x $upper("}},
         "1008: The parenthesis of $upper is not closed (character 3)"},
        {FormatValue::kind,
         "\n",
         {{1008, "\xC3\xA9$if("}},
         "1008: The parenthesis of $if is not closed (character 2)"},
        {AutoTrackNumber::kind, "", {{1001, "%album%[%list_index%]"}}, "1001: First track: Held"},
        {GuessFromFileName::kind,
         "",
         {{1007, "%band%/%album%/%n% - %title%"}},
         "1007: First track: ALBUM = \"Record\"; BAND = \"Band\"; N = \"07\"; TITLE = \"Song\""},
        {GuessFromFileName::kind, "", {{1007, "x"}}, "1007: No fields found in \"07 - Song.mp3\""},
        {GuessFromFields::kind, "%a%n%b%\n", {{1028, "%artist%"}}, "1028: First track: Ann"},
        {GuessFromFields::kind, "\n%artist%", {{1008, "%a%n%b%"}}, "1008: First track: A = \"A\"; B = \"n\""},
        {GuessFromFields::kind,
         "x\n$if(",
         {{1008, "%a%"}},
         "1008: The parenthesis of $if is not closed (character 1)"},
        {InputData::kind,
         "\n0\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6. Six\r\n7",
         {{1001, "%n%. %title%"}},
         "1001: First track: N = \"6\"; TITLE = \"Six\""},
        {GuessFromFields::kind, "\n[%none%]", {{1008, "%x%"}}, "1008: No fields found in \"\""},
        {AutoTrackNumber::kind, "x", {{1001, ""}}, "1001: All tracks are one album"},
        {InputData::kind, "\nonly one line", {{1001, "%n%"}}, ""},
    };
    for (const auto& row : rows) {
        const Dialog dialog = open(row.kind, row.parameters);
        int id = 0;
        for (const auto& [control, text] : row.typed)
            dialog.type(id = control, text);
        EXPECT_EQ(tip(dialog, id), row.tip);
        dialog.press_cancel();
        run_deleted();
    }
}

TEST_F(PatternTipTest, ShowsWhileTheBoxHasTheFocus) {
    const Dialog dialog = open(FormatValue::kind, "A\n%artist%");
    QTest::qWait(150);
    EXPECT_EQ(dialog.message(), "") << "the focus is in the field's box";
    EXPECT_EQ(tip(dialog, 1008), "1008: First track: Ann");
    dialog.control(2).setFocus();
    EXPECT_EQ(dialog.message(), "");
    EXPECT_EQ(tip(dialog, 1008), "1008: First track: Ann");
    dialog.type(1024, "%");
    dialog.control(1008).setFocus();
    dialog.press_ok();
    EXPECT_EQ(dialog.message(), "1024: Please enter a valid field name.");

    // What is wrong with the input is not covered.
    const Dialog guess = open(GuessFromFileName::kind, "%a%");
    EXPECT_NE(tip(guess, 1007), "");
    guess.type(1007, "");
    guess.press_ok();
    EXPECT_EQ(tip(guess, 1007), "1007: Please enter a pattern.");
    guess.press_cancel();

    // Without a track only faults are told.
    desk_->sample.track = nullptr;
    const Dialog other = open(FormatValue::kind, "A\n%artist%");
    EXPECT_EQ(tip(other, 1008), "");
    other.type(1008, "$if(");
    EXPECT_NE(tip(other, 1008), "");
}

TEST_F(PatternTipTest, HidesNothingOfItsDialog) {
    const struct {
        Guid kind;
        const char* parameters;
        std::vector<int> boxes;
    } dialogs[] = {{FormatValue::kind, "A\n", {1008}},
                   {GuessFromFileName::kind, "", {1007}},
                   {GuessFromFields::kind, "\n", {1028, 1008}},
                   {AutoTrackNumber::kind, "", {1001}},
                   {InputData::kind, "\n1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7", {1001}}};
    const QRect screen = owner_->screen()->availableGeometry();
    for (const auto& [kind, parameters, boxes] : dialogs) {
        // In the middle, and where the screen ends near by.
        for (const QPoint& place :
             {screen.center() - QPoint(150, 150), screen.topLeft(), screen.bottomRight() - QPoint(200, 90)}) {
            const Dialog dialog = open(kind, parameters);
            dialog.window().move(place);
            for (const int id : boxes) {
                dialog.type(id, "%artist% - %album%");
                ASSERT_NE(tip(dialog, id), "") << id;
                const QRect shown = test::shown_balloon(dialog.window())->geometry();
                EXPECT_TRUE(screen.contains(shown)) << id;
                for (const QWidget* other :
                     dialog.window().findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
                    const QRect rect(other->mapToGlobal(QPoint(0, 0)), other->size());
                    if (!other->isWindow() && other->isVisible() && screen.intersects(rect)) {
                        EXPECT_FALSE(rect.intersects(shown)) << other->metaObject()->className() << " of "
                                                             << dialog.window().windowTitle().toStdString();
                    }
                }
            }
            dialog.press_cancel();
            run_deleted();
        }
    }
}

TEST_F(PatternTipTest, LongResultsAreCut) {
    const Dialog dialog = open(FormatValue::kind, "A\n$repeat(x,5000)");
    const std::string text = tip(dialog, 1008);
    EXPECT_TRUE(text.ends_with("xxx (...)")) << text;
    EXPECT_LT(text.size(), 300U);
    EXPECT_LE(test::shown_balloon(dialog.window())->width(), dialog.control(1008).width() + 20);
}

} // namespace
} // namespace quorvex
