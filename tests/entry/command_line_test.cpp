#include "entry/command_line.h"

#include "tests/support/fake_host.h"
#include "tests/support/short_forms.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;

class CommandLine : public test::WithHost {
protected:
    CommandLine() {
        for (const char* file : {"f1", "f2", "f3"})
            tag_io_.put(file, file);
        tag_io_.put("album", "f1 f2 f3");
        tag_io_.put("broken", "f1 f2 !");
    }
    /// One argument with the files behind it, which stand between blanks.
    void run(const char* argument, const char* files) {
        handler_->on_token(argument);
        give(files);
        handler_->on_files_done();
    }
    void give(const char* files) {
        std::istringstream words(files);
        for (std::string file; words >> file;)
            handler_->on_file(file.c_str());
    }
    std::string tags(const char* path = "f1") { return test::tags_text(tag_io_.track(path).tags); }

    const Ref<TagCommandLine> handler_ = make_service<TagCommandLine>();
};

TEST_F(CommandLine, TakesItsOwnArguments) {
    const auto take = [&](const char* argument) {
        const auto result = static_cast<int>(handler_->on_token(argument));
        return std::to_string(result) + host_.take_events().substr(0, 40);
    };
    for (const char* argument : {"/help", "/HELP", "/?", "/tag:help", "/TAG:Help"})
        EXPECT_EQ(take(argument), "0showed Command-line Help (Quorvex): Usag") << argument;
    for (const char* argument :
         {"/tag:", "/tag:;;", "/tag:help=x", "/tag:helpx", "/tag:help;a=b", "/Tag:a=b", "/tag:\xFF"})
        EXPECT_EQ(take(argument), "2") << argument;
    for (const char* argument :
         {"", "/tag", "tag:a=b", "/help ", "/??", "/other:a=b", " /tag:a=b", "/tag\uFF1Aa=b"})
        EXPECT_EQ(take(argument), "0") << argument;
    EXPECT_TRUE(handler_->wants_directories());
}

class Undone final : public HeapService<UndoneWork> {
public:
    explicit Undone(test::FakeHost& host) : host_(host) {}
    void note(const char* why) override { host_.note(std::string("undone ") + why); }

private:
    test::FakeHost& host_;
};

TEST_F(CommandLine, TellsTheHostOfWhatIsNotDone) {
    host_.offer<UndoneWork>(make_service<Undone>(host_));
    run("/tag:;", "f1 f2");
    EXPECT_EQ(host_.take_events(),
              "undone \"/tag:\" names no command for the files after it, see /tag:help for more info.");
    run("/tag:", "");
    EXPECT_EQ(host_.take_events(), "");
    run("/tag:what;genre=x", "f1");
    EXPECT_EQ(host_.take_events(), "update of f1, main window, flags 0\n"
                                   "Unknown command: \"what\", see /tag:help for more info.\nundone ");
    run("/tag:genre=y", "f1");
    EXPECT_EQ(host_.take_events(), "update of f1, main window, flags 0");
}

TEST_F(CommandLine, HelpIsAsAgreed) {
    handler_->on_token("/tag:help");
    std::string text = host_.take_events();
    text.erase(0, std::string_view("showed Command-line Help (Quorvex): ").size());
    EXPECT_EQ(text.size(), 1067U);
    std::uint64_t digest = 0xCBF29CE484222325; // FNV-1a
    for (const char c : text)
        digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    EXPECT_EQ(digest, 0x5D790829CB23F723U) << text;
}

TEST_F(CommandLine, EditsOneTrack) {
    const auto unknown = [](const char* command) {
        return "\nUnknown command: \"" + std::string(command) + "\", see /tag:help for more info.";
    };
    const struct {
        const char* argument;
        const char* before;
        const char* after;
        std::string console = "";
    } rows[] = {
        {"/tag:title=x", "TITLE=[a][b] ARTIST=[c]", "ARTIST=[c] title=[x]"},
        {"/tag:;a=1;;b=2;", "", "a=[1] b=[2]"},
        {"/tag:comment=", "A=[x] COMMENT=[y][z]", "A=[x]"},
        {"/tag:a=x\\y", "", "a=[x][y]"},
        {"/tag:a=x\\\\y\\", "", "a=[x][y]"},
        {"/tag:a=\\x", "A=[z]", "a=[][x]"},
        {"/tag:a=\\\\", "A=[z]", "a=[]"},
        {"/tag:a=x=y", "", "a=[x=y]"},
        {"/tag: a = x ", "", " a =[ x ]"},
        {"/tag:a=1;a=2;b=3;b=", "", "a=[2]"},
        {"/tag:format:x:%a%=b", "", "format:x:%a%=[b]"},
        {"/tag:AutoTrackNumber", "tracknumber=[9][8] TOTALTRACKS=[5]", "tracknumber=[1] TOTALTRACKS=[5]"},
        {"/tag:a=1;what;b=2", "", "a=[1] b=[2]", unknown("what")},
        {"/tag:FORMAT:COMMENT;GUESS:x", "A=[x]", "A=[x]", unknown("FORMAT:COMMENT") + unknown("GUESS:x")},
        {"/tag:AUTOTRACKNUMBERS; ", "", "", unknown("AUTOTRACKNUMBERS") + unknown(" ")},
    };
    for (const auto& row : rows) {
        tag_io_.track("f1").tags = test::tags(row.before);
        run(row.argument, "f1");
        EXPECT_EQ(tags(), row.after) << row.argument;
        EXPECT_EQ(host_.take_events(), "update of f1, main window, flags 0" + row.console) << row.argument;
    }
}

TEST_F(CommandLine, NumbersTracksByTheirFirstPosition) {
    const struct {
        const char* files;
        const char* update;
        const char* numbers;
    } rows[] = {
        {"f1 f2 f3", "f1 f2 f3", "123"},
        {"f3 f2 f1", "f3 f2 f1", "321"},
        {"f1 f2 f1 f3", "f1 f2 f1 f3", "124"},
        {"f2 album", "f2 f1 f2 f3", "214"},
    };
    for (const auto& row : rows) {
        run("/tag:AUTOTRACKNUMBER", row.files);
        EXPECT_EQ(host_.take_events(), "update of " + std::string(row.update) + ", main window, flags 0");
        std::string numbers;
        for (const char* file : {"f1", "f2", "f3"})
            numbers += tag_io_.track(file).tags.value(0, 0);
        EXPECT_EQ(numbers, row.numbers) << row.files;
    }
    EXPECT_EQ(tags(), "TRACKNUMBER=[2]") << "no total is set";
}

TEST_F(CommandLine, UpdatesNothingWithoutCommandsOrFiles) {
    for (const char* argument : {"/tag:", "/tag:;;;", "/other", "/tag:help"}) {
        handler_->on_token("/tag:a=1"); // every argument forgets those before
        handler_->on_token(argument);
        host_.take_events();
        give("f1 f2");
        handler_->on_files_done();
        EXPECT_EQ(host_.take_events(), "") << argument;
    }
    run("/tag:a=1", "");
    handler_->on_token("/tag:a=1");
    give("f1");
    run("/other", "");
    handler_->on_token("/tag:a=1");
    give("f1");
    run("/tag:a=2", "");
    EXPECT_EQ(host_.take_events(), "");
    run("/tag:what", "f1 f2 f1");
    handler_->on_files_done();
    const std::string unknown = "\nUnknown command: \"what\", see /tag:help for more info.";
    EXPECT_EQ(host_.take_events(), "update of f1 f2 f1, main window, flags 0" + unknown + unknown)
        << "the batch is forgotten; the line comes once per track";
}

TEST_F(CommandLine, GoesOnWithoutFilesThatCannotBeResolved) {
    run("/tag:a=1", "none f2");
    EXPECT_EQ(host_.take_events(),
              "Path evaluation failure: File not found\nupdate of f2, main window, flags 0");
    // A location that fails half way adds nothing.
    run("/tag:a=1", "f3 broken");
    EXPECT_EQ(host_.take_events(), "Path evaluation failure: Unsupported format or corrupted file\n"
                                   "update of f3, main window, flags 0");
    EXPECT_EQ(tags("f1"), "");
}

TEST_F(CommandLine, TakesTheNextArgumentWhileAnUpdateRuns) {
    tag_io_.carry_out_updates_late();
    run("/tag:a=1;AUTOTRACKNUMBER", "f1 f2");
    run("/tag:b=1", "f2");
    handler_->on_token("/tag:c=1");
    give("f3 f1");
    tag_io_.carry_out_updates_late();
    EXPECT_EQ(tags("f1"), "a=[1] TRACKNUMBER=[1]");
    EXPECT_EQ(tags("f2"), "a=[1] TRACKNUMBER=[2] b=[1]");
    EXPECT_EQ(tags("f3"), "");
}

} // namespace
} // namespace quorvex
