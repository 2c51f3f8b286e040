#include "actions/format_value.h"

#include "actions/field_provider.h"
#include "component/configuration.h"
#include "tests/actions/kinds_fixture.h"

#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>

namespace quorvex {
namespace {

using namespace vantaro;

/// In units of 100 ns since 1601: 2026-03-01 18:05:09 UTC, and half a second.
constexpr std::uint64_t some_time = 134'168'619'095'000'000;

/// What the provider gives for a field; nothing when it does not provide it.
std::optional<std::string> provided(FieldProvider provider, std::string_view name) {
    class Output final : public TitleFormatOutput {
    public:
        void write(const char* part, std::size_t length) override { text.append(part, length); }
        std::string text;
    } out;
    bool found = false;
    if (!provider.process_field(name.data(), name.size(), out, found))
        return std::nullopt;
    EXPECT_TRUE(found);
    return out.text;
}

class FormatKind : public test::Kinds {
protected:
    static void use_time_zone(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    ~FormatKind() override {
        ::unsetenv("TZ");
        ::tzset();
    }
    static constexpr Guid kind = FormatValue::kind;
};

TEST_F(FormatKind, ProvidesFieldsOfTheRun) {
    constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
    const struct {
        std::uint32_t index;
        std::uint32_t total;
        const char* number;
        const char* count;
    } rows[] = {
        {0, 100, "001", "100"},   {99, 100, "100", "100"},
        {0, 12, "01", "12"},      {8, 9, "9", "9"},
        {249, 250, "250", "250"}, {9, 9, "10", "9"},
        {0, 0, "1", "0"},         {most, most, "4294967296", "4294967295"},
    };
    for (const auto& row : rows) {
        const FieldProvider provider(row.index, row.total, 0);
        for (const char* name : {"list_index", "LIST_INDEX", "_quorvex_index", "_Quorvex_Index"})
            EXPECT_EQ(provided(provider, name), row.number) << name;
        for (const char* name : {"list_total", "_QUORVEX_TOTAL"})
            EXPECT_EQ(provided(provider, name), row.count) << name;
    }
    for (const char* name : {"", "list_inde", "list_indexx", "quorvex_index", "title", "now"})
        EXPECT_EQ(provided(FieldProvider(0, 1, 0), name), std::nullopt) << name;

    use_time_zone("UTC-1"); // one hour east
    EXPECT_EQ(provided(FieldProvider(0, 1, some_time), "NOW"), "2026-03-01 19:05:09");
    EXPECT_EQ(provided(FieldProvider(0, 1, 1), "now"), "1601-01-01 01:00:00");
    use_time_zone("UTC");
    EXPECT_EQ(provided(FieldProvider(0, 1, some_time), "now"), "2026-03-01 18:05:09");
    EXPECT_NE(provided(FieldProvider(0, 1, ~std::uint64_t{0}), "now"), std::nullopt);
}

TEST_F(FormatKind, SetsOrRemovesTheField) {
    track_.hold(make_service<core::HeldInfo>(test::tags("ARTIST=[held]"), FileStats(), false));
    expect_edits(kind,
                 {
                     {"TITLE\n%artist% - %title%", "title=[t][u] ARTIST=[a]", "title=[a - t, u] ARTIST=[a]"},
                     {"MY FIELD\n$upper(%artist%)", "ARTIST=[a]", "ARTIST=[a] MY FIELD=[A]"},
                     {"A\n[%b%]", "A=[x][y] C=[z]", "C=[z]"},
                     {"A\n", "A=[x]", ""},
                     {"A\n[%b%]", "C=[z]", "C=[z]"},
                     {"A\n[%now%]", "A=[x]", ""},
                     {"A\n%filename_ext%", "", "A=[07 - Song.mp3]"},
                     {"A\n$if(", "A=[x]", "A=[<ERROR>]"},
                     {"A\n x ", "", "A=[ x ]"},
                     {"\nx", "A=[x]", "A=[x]"},
                     {"A%\nx", "A=[x]", "A=[x]"},
                 });
    EXPECT_EQ(edited(kind, "N\n%list_index%/%list_total% %_QUORVEX_index%", "", 8, 250), "N=[009/250 009]");
}

TEST_F(FormatKind, Texts) {
    expect_texts(kind,
                 {{"A\n%b%", "Format \"A\" using \"%b%\""},
                  {"\n" + test::repeat("x", 300), "Format \"\" using \"" + test::repeat("x", 300) + '"'}});
    expect_rejected(kind, {"", "A", "A\nb\n", "A\nb\nc"});
    EXPECT_EQ(defaults(kind), "\n%artist% - %title%");
    const auto typed = make_service<FormatValue>(*notify_);
    typed->accept({"A\nB", "x\ny"});
    EXPECT_EQ(parameters(*typed), "A|B\nx|y");
    EXPECT_EQ(description(*typed), "Format \"A|B\" using \"x|y\"") << "the settings have changed too";
}

TEST_F(FormatKind, FollowsTheClockWhileItShowsIt) {
    use_time_zone("UTC");
    for (const char* pattern : {"%now%", "[%NOW%]", "x%Now%"}) {
        Ref<Action> following = action(kind, std::string("A\n") + pattern);
        EXPECT_EQ(host_.take_events(), "clock every 10000000") << pattern;
        clock_->tell(some_time);
        EXPECT_EQ(host_.take_events(), "notified 0");
        TrackInfoRecord info;
        following->apply(&track_, info, 0, 1);
        EXPECT_TRUE(std::string_view(info.value(0, 0)).ends_with("2026-03-01 18:05:09")) << info.value(0, 0);
        clock_->tell(some_time + 10'000'000);
        following->apply(&track_, info, 0, 1);
        EXPECT_TRUE(std::string_view(info.value(0, 0)).ends_with("18:05:10")) << info.value(0, 0);
        EXPECT_EQ(host_.take_events(), "notified 0");
        EXPECT_EQ(test::references(*notify_), 2U) << "the notify is kept";
        following = nullptr;
        EXPECT_EQ(host_.take_events(), "clock left");
        EXPECT_EQ(test::references(*notify_), 1U);
    }
    for (const char* pattern : {"now", "%now", "%know%", "% now%"})
        action(kind, std::string("A\n") + pattern);
    text_setting(setting::last_formatting_pattern).set("%now%");
    EXPECT_EQ(defaults(kind), "\n%now%");
    EXPECT_EQ(host_.take_events(), "") << "none of them follows the clock";
}

} // namespace
} // namespace quorvex
