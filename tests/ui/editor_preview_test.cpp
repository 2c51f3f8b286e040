// What the editor says of its tracks before, during and after a run.

#include "actions/embed_cuesheet.h"
#include "actions/fixed_value.h"
#include "tests/support/fake_actions.h"
#include "tests/ui/editor_fixture.h"
#include "ui/widgets/change_label.h"
#include "ui/widgets/tool_tip.h"

#include <QAbstractItemModel>
#include <QElapsedTimer>
#include <QLabel>
#include <QStyle>
#include <QTextLayout>

#include <algorithm>

namespace quorvex {
namespace {

using namespace vantaro;
using namespace editor_control;
using test::Editor;

constexpr Guid fake_kind = test::kind(8);

/// An action that knows how often it was called, and by which thread it must not be.
class Watched final : public HeapService<Action> {
public:
    bool has_settings() override { return false; }
    void create_settings_dialog(WindowHandle, CompletionNotify*) override {}
    void get_description(TextSink& out) override { set_text(out, "watched"); }
    void get_parameter_text(TextSink&) override {}
    void apply(TrackHandle* track, TrackInfo& info, std::uint32_t, std::uint32_t) override {
        ++calls;
        if (microseconds > 0)
            std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
        if (std::string_view(track->path()).ends_with(changing))
            info.set_field("COUNT", std::to_string(calls).c_str());
    }
    Guid get_guid() override { return fake_kind; }
    bool uses_group_key() override { return false; }
    Guid get_group_key(TrackHandle*) override { return {}; }

    std::string changing;
    int calls = 0;
    int microseconds = 0;
};

class WatchedType final : public HeapService<ActionType> {
public:
    Guid get_guid() override { return fake_kind; }
    void get_name(TextSink& out) override { set_text(out, "Watched"); }
    Action* create(CompletionNotify* notify) override {
        refresh = Ref(notify);
        return Ref<Action>(action).detach();
    }
    Action* create_from_text(CompletionNotify* notify, const char*) override { return create(notify); }

    const Ref<Watched> action = make_service<Watched>();
    Ref<CompletionNotify> refresh;
};

class EditorPreviews : public test::Editors {
protected:
    EditorPreviews() {
        host_.offer<ActionType>(type_);
        save_script("[last used]", {{fake_kind, ""}});
    }
    static QLabel& label(const Editor& editor) { return editor.control<QLabel>(change_count); }
    static std::string count(const Editor& editor) {
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return !label(editor).text().isEmpty() && !label(editor).text().endsWith(u'…'); }));
        return label(editor).text().toStdString();
    }
    static QVariant data(const Editor& editor, int row, int role) {
        return editor.control<QTableView>(track_list).model()->index(row, 1).data(role);
    }
    static bool is_bold(const Editor& editor, int row) {
        return data(editor, row, Qt::FontRole).value<QFont>().bold();
    }
    static int current_row(const Editor& editor) {
        return editor.control<QTableView>(track_list).currentIndex().row();
    }

    const Ref<WatchedType> type_ = make_service<WatchedType>();
    Watched& action_ = *type_->action;
};

TEST_F(EditorPreviews, AFailureIsNoChange) {
    class Failing final : public HeapService<ActionType> {
    public:
        Guid get_guid() override { return test::kind(9); }
        void get_name(TextSink& out) override { set_text(out, "Failing"); }
        Action* create(CompletionNotify*) override {
            return make_service<test::FakeAction>(get_guid(), "fail").detach();
        }
        Action* create_from_text(CompletionNotify*, const char* text) override {
            return make_service<test::FakeAction>(get_guid(), text).detach();
        }
    };
    host_.offer<ActionType>(make_service<Failing>());
    save_script("[last used]", {{test::kind(9), "fail"}});
    const Editor editor = open_editor("a b");
    EXPECT_EQ(editor.previews(), "Erorr: no such luck|Erorr: no such luck|");
    EXPECT_EQ(count(editor), "0 of 2 change");
    EXPECT_FALSE(is_bold(editor, 0));
    save_script("[last used]", {{SetValue::kind, "ARTIST\ny"}});
    const Editor other = open_editor("a b");
    EXPECT_EQ(count(other), "2 of 2 change");
    EXPECT_TRUE(is_bold(other, 0));
}

TEST_F(EditorPreviews, PrintNothing) {
    save_script("[last used]", {{EmbedCuesheet::kind, ""}});
    const Editor editor = open_editor("a b");
    EXPECT_EQ(editor.previews(), "No changes|No changes|");
    EXPECT_EQ(data(editor, 0, Qt::ToolTipRole), "No changes");
    EXPECT_EQ(count(editor), "0 of 2 change");
    EXPECT_EQ(host_.take_events(), "");
    editor.click(run);
    EXPECT_EQ(host_.take_events(), "update of a b, window, flags 8, watched\n"
                                   "Embedded cuesheets not supported for this file format: a\n"
                                   "Embedded cuesheets not supported for this file format: b");
}

TEST_F(EditorPreviews, LeaveTheActionsToARun) {
    const Editor editor = open_editor("a b c");
    editor.previews();
    EXPECT_EQ(count(editor), "3 of 3 change");
    tag_io_.carry_out_updates_late();
    editor.click(run);
    const int calls = action_.calls;
    const std::string before = editor.previews();
    tag_io_.tell_changed("a b");
    type_->refresh->notify(0);
    QTest::keyClick(&editor.window(), Qt::Key_F3);
    QTest::qWait(300);
    EXPECT_EQ(editor.previews(), before);
    data(editor, 0, Qt::ToolTipRole);
    EXPECT_EQ(action_.calls, calls);
    tag_io_.carry_out_updates_late();
    EXPECT_EQ(action_.calls, calls + 3) << "the run's";
    EXPECT_NE(editor.previews(), before);
    EXPECT_GT(action_.calls, calls + 3);
    QTest::qWait(300);
    EXPECT_EQ(count(editor), "3 of 3 change");
}

TEST_F(EditorPreviews, GoToTheNextChange) {
    action_.changing = "x";
    for (const char* path : {"1x", "2", "3x", "4"})
        tag_io_.track(path).is_held = true;
    const Editor editor = open_editor("4 1x 2 3x");
    const auto press = [&] { QTest::keyClick(&editor.window(), Qt::Key_F3); };
    press();
    EXPECT_EQ(current_row(editor), 1) << "before anything is counted";
    press();
    EXPECT_EQ(current_row(editor), 3);
    EXPECT_EQ(count(editor), "2 of 4 change");
    press();
    EXPECT_EQ(current_row(editor), 1) << "on from the start";
    QTest::mouseClick(&label(editor), Qt::LeftButton);
    EXPECT_EQ(current_row(editor), 3);
    editor.select(0);
    editor.click(remove);
    press();
    QTest::qWait(200);
    EXPECT_EQ(current_row(editor), 3) << "there is none";
}

TEST_F(EditorPreviews, SayWhatFits) {
    const Editor editor = open_editor("a b");
    const std::string whole = count(editor);
    EXPECT_EQ(whole, "2 of 2 change");
    QLabel& shown = label(editor);
    const auto fits = [&] { return shown.fontMetrics().horizontalAdvance(shown.text()) <= shown.width(); };
    const int enough = shown.fontMetrics().horizontalAdvance("2 of 2 change") + 2;
    shown.resize(enough - 10, shown.height());
    EXPECT_EQ(shown.text(), "2 of 2") << "the window was narrowed";
    EXPECT_TRUE(fits());
    shown.resize(enough, shown.height());
    EXPECT_EQ(shown.text(), "2 of 2 change");

    QLabel below;
    below.show();
    ChangeLabel outcome(below, [] {});
    outcome.show_outcome("12 files changed. Ctrl+Z takes it back.");
    const auto width_of = [&](const char* text) {
        return below.fontMetrics().horizontalAdvance(QString::fromLatin1(text)) + 2;
    };
    for (const char* text :
         {"12 files changed. Ctrl+Z takes it back.", "12 files changed.", "12 files changed", "12 changed"}) {
        below.resize(width_of(text), below.height());
        EXPECT_EQ(below.text().toStdString(), text);
    }
    below.resize(width_of("12 cha"), below.height());
    EXPECT_TRUE(below.fontMetrics().horizontalAdvance(below.text()) <= below.width())
        << below.text().toStdString();
    EXPECT_TRUE(below.toolTip().contains("12 files changed. Ctrl+Z takes it back."));
}

TEST_F(EditorPreviews, NamesHaveRoomOnceTheyAreBold) {
    for (std::size_t length = 1; length <= 22; ++length) {
        const std::string name = std::string("Tiffany will fill it little").substr(0, length) + "f,.j";
        tag_io_.track("a").tags = test::tags("TITLE=[" + name + "]");
        const Editor editor = open_editor("a");
        const auto& table = editor.control<QTableView>(track_list);
        QFont bold = table.font();
        bold.setBold(true);
        QTextLayout layout(QString::fromStdString(name), bold); // as the view lays it out
        layout.beginLayout();
        QTextLine line = layout.createLine();
        line.setLineWidth(10'000);
        layout.endLayout();
        const int margin = table.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &table) + 1;
        const int grid = 1;
        EXPECT_LE(line.naturalTextWidth(), table.columnWidth(0) - grid - 2 * margin) << name;
        editor.window().close();
        run_deleted();
    }
}

TEST_F(EditorPreviews, TooltipsShowTextAsItIs) {
    const QString tip = plain_tool_tip("<b>bold</b> & \"more\"\nline");
    EXPECT_TRUE(tip.contains("&lt;b&gt;bold&lt;/b&gt; &amp; &quot;more&quot;\nline")) << tip.toStdString();
    EXPECT_EQ(plain_tool_tip(""), "");
    QString lines;
    for (int i = 0; i < 1000; ++i)
        lines += QString("line %1\n").arg(i);
    EXPECT_LT(plain_tool_tip(lines).count(u'\n'), 30);
    EXPECT_LT(plain_tool_tip(QString(100'000, u'x')).size(), 2000);

    save_script("[last used]", {{SetValue::kind, "ARTIST\n<i>v</i>"}});
    std::string many = "TITLE=[Song a] ARTIST=";
    for (int i = 0; i < 500; ++i)
        many += "[<u>" + std::to_string(i) + "]";
    tag_io_.track("a").tags = test::tags(many);
    const Editor editor = open_editor("a");
    EXPECT_TRUE(editor.list().item(0)->toolTip().contains("&lt;i&gt;"));
    const QString comparison = data(editor, 0, Qt::ToolTipRole).toString();
    EXPECT_TRUE(comparison.contains("&lt;u&gt;0") && comparison.contains("(496 more)"))
        << comparison.toStdString();
}

class Counting : public EditorPreviews {
protected:
    void count(std::size_t tracks) {
        std::string paths;
        for (std::size_t i = 0; i < tracks; ++i)
            paths += std::to_string(i) + ' ';
        rows_.emplace(tag_io_.tracks(paths));
        counter_.emplace(
            *rows_,
            [this] {
                return PreviewedScript{script_, nullptr};
            },
            [](const ChangeCounter&) {});
        counter_->restart();
    }
    bool is_done() const { return counter_->counted() == counter_->total(); }

    const Script script_{type_->action};
    std::optional<PreviewRows> rows_;
    std::optional<ChangeCounter> counter_;
};

TEST_F(Counting, EndsAlthoughTimeGoesOn) {
    action_.microseconds = 100;
    count(2000);
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] { counter_->refresh(); });
    tick.start(5);
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_done(); }, 20'000));
    EXPECT_EQ(counter_->changed(), 2000U);
    QTest::qWait(500);
    EXPECT_TRUE(is_done()) << "the number stays there while it is brought up to date";
    EXPECT_LE(action_.calls, 4000) << "most of the time nothing is tried";

    // What has changed is noticed in the end.
    action_.microseconds = 0;
    action_.changing = "7";
    counter_->restart();
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_done(); }, 20'000));
    EXPECT_EQ(counter_->changed(), 200U);
    action_.changing = "17";
    EXPECT_TRUE(QTest::qWaitFor([&] { return counter_->changed() == 20; }, 20'000));
    EXPECT_TRUE(is_done());
}

TEST_F(Counting, ARowIsCountedAnewByItself) {
    action_.changing = "1";
    count(100);
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_done(); }));
    EXPECT_EQ(counter_->changed(), 10U);
    const int calls = action_.calls;
    action_.changing = "no such";
    counter_->recount(11);
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_done(); }));
    EXPECT_EQ(counter_->changed(), 9U);
    EXPECT_EQ(action_.calls, calls + 1);
}

TEST_F(Counting, ASearchStopsNothing) {
    action_.changing = "99999";
    count(100'000);
    std::vector<std::size_t> found;
    QElapsedTimer time;
    time.start();
    counter_->find_next(0, [&](std::size_t row) { found.push_back(row); });
    EXPECT_LT(time.elapsed(), 200);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !found.empty(); }, 60'000));
    EXPECT_EQ(found, std::vector<std::size_t>{99'999});
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_done(); }, 60'000));
    const int calls = action_.calls;
    EXPECT_EQ(calls, 100'000) << "no track is tried twice";
    counter_->find_next(99'999, [&](std::size_t row) { found.push_back(row); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return found.size() == 2; }, 5000));
    EXPECT_EQ(found.back(), 99'999U) << "it is the only one";
    EXPECT_EQ(action_.calls, calls);
}

} // namespace
} // namespace quorvex
