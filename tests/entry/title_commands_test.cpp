// The commands of "/tag:" arguments that use title formatting.

#include "entry/tag_commands.h"

#include "tests/support/fake_host.h"
#include "tests/support/short_forms.h"
#include "vantaro/titleformat/title_format.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;

class TitleCommands : public test::WithHost {
protected:
    TitleCommands() { host_.offer(Ref<TitleFormatCompiler>(&compiler_)); }
    core::TitleFormatting compiler_;
    core::Track track_{"/m/07. Song.mp3", 0};
};

TEST_F(TitleCommands, EditTheTags) {
    constexpr const char* not_taken = "not a command";
    const struct {
        const char* command;
        const char* before;
        const char* after;
    } rows[] = {
        {"FORMAT:COMMENT:%artist% - %title%", "Title=[t] ARTIST=[a][b] comment=[x][y]",
         "Title=[t] ARTIST=[a][b] COMMENT=[a, b - t]"},
        {"format:A:%_FILENAME%:%_filename%", "", "A=[07. Song:07. Song]"},
        {"Format:A:", "A=[x][y] B=[z]", "B=[z]"},
        {"FORMAT:A:[%b%]", "A=[x]", ""},
        {"FORMAT:A:[%list_index%]", "A=[x]", ""},
        {"FORMAT:A:$if(", "A=[x]", not_taken},
        {"FORMAT:A:%title%=%b%", "A=[x]", "A=[x] FORMAT:A:%title%=[%b%]"},
        {"FORMAT:COMMENT", "A=[x]", not_taken},
        {"FORMAT", "A=[x]", not_taken},
        {"FORMATS:A:x", "A=[x]", not_taken},
        {"FORMAT :A:x", "A=[x]", not_taken},
        {"GUESS:%TRACKNUMBER%. %TITLE%:%_FILENAME%", "Title=[x] A=[y]",
         "Title=[Song] A=[y] TRACKNUMBER=[07]"},
        {"guess:%a%:%b%:%c%", "B=[x] C=[y]", "B=[x] C=[y] a=[x:y]"},
        {"GUESS:%a%:", "A=[x]", "A=[x]"},
        {"GUESS:%a%:$if(", "A=[x]", "A=[x]"},
        {"GUESS::x", "A=[x]", "A=[x]"},
        {"GUESS:%a%", "A=[x]", not_taken},
        {"GUESS:%a%:x=y", "A=[x]", "A=[x] GUESS:%a%:x=[y]"},
    };
    for (const auto& row : rows) {
        TrackInfoRecord info = test::tags(row.before);
        const bool taken = run_tag_command(row.command, &track_, info, 0);
        EXPECT_EQ(taken ? test::tags_text(info) : not_taken, row.after) << row.command;
        if (!taken) {
            EXPECT_EQ(test::tags_text(info), row.before) << row.command;
        }
    }
    TrackInfoRecord info = test::tags("TITLE=[t]");
    for (const char* command : {"A=x", "FORMAT:A:%a%%title%", "GUESS:%B%t:%a%", "FORMAT:A:[%none%]"})
        EXPECT_TRUE(run_tag_command(command, &track_, info, 0)) << command;
    EXPECT_EQ(test::tags_text(info), "TITLE=[t] B=[x]") << "each sees what those before have left";
}

} // namespace
} // namespace quorvex
