// Components of others in the real host, and services by class.

#include "component/entry/client.h"
#include "engine/run.h"
#include "script/action_registry.h"
#include "tests/support/edit_file.h"
#include "tests/support/temporary_folder.h"
#include "vantaro/application/argument_distributor.h"
#include "vantaro/application/host.h"
#include "vantaro/tags/tag_file.h"
#include "vantaro/terminal/question.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

namespace vantaro::core {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr Guid foreign_kind = guid("{12345678-9ABC-4DEF-8123-456789ABCDEF}");

class Lines final : public StaticService<HostConsole> {
public:
    void print(const char* text, std::size_t length) override { lines.emplace_back(text, length); }
    std::vector<std::string> lines;
};

class Watcher final : public UpdateWatcher {
public:
    explicit Watcher(std::vector<std::string>& errors) : errors_(errors) {}
    void on_track(const TrackOutcome& outcome, std::size_t, std::size_t) override {
        if (outcome.state == TrackOutcome::State::failed)
            errors_.push_back(outcome.error);
    }
    void on_end(const UpdateReport&) override {}

private:
    std::vector<std::string>& errors_;
};

class ComponentTest : public testing::Test {
protected:
    ComponentTest() {
        setup.config_dir = folder.path("config");
        setup.state_dir = folder.path("state");
        setup.component_dir = folder.make_folder("components");
        setup.interrupt = &interrupt;
        setup.console = &console;
        setup.message = &message;
        setup.question = &question;
        setup.make_watcher = [this](std::size_t, WindowHandle) { return std::make_unique<Watcher>(errors); };
    }
    void install(const char* built, const std::string& name) {
        std::filesystem::copy_file(built, folder.path("components/" + name));
    }

    test::TemporaryFolder folder;
    int argc = 1;
    char program[5] = "test";
    char* argv[2] = {program, nullptr};
    QCoreApplication qt{argc, argv};
    Interrupt interrupt;
    Terminal terminal;
    Lines console;
    TerminalMessage message;
    TerminalQuestion question{terminal, false, interrupt.flag()};
    HostSetup setup;
    std::vector<std::string> errors;
};

TEST_F(ComponentTest, OneThatCannotBeLoadedIsNamedAndTheOthersWork) {
    install(FOREIGN_COMPONENT, "good.dll");
    install(OUTDATED_COMPONENT, "outdated.dll");
    folder.write("components/garbage.dll", "no library");
    folder.write("components/readme.txt", "no component");
    Host host(setup);
    host.load_components();
    EXPECT_THAT(console.lines,
                ElementsAre(HasSubstr("garbage.dll"),
                            AllOf(HasSubstr("outdated.dll"), HasSubstr("79"), HasSubstr("80"))));
    EXPECT_EQ(host.count_services(host.find_service_class(quorvex::ActionType::class_guid)), 1U);
    host.close();
}

TEST_F(ComponentTest, AKindOfSomebodyElsesRunsInAScript) {
    install(FOREIGN_COMPONENT, "foreign.dll");
    for (const char* file : {"a.flac", "b.flac"})
        std::filesystem::copy_file(
            std::filesystem::path(QUORVEX_SAMPLES) / "album/02 - Gulls over Slate.flac", folder.path(file));
    test::edit_file(folder.path("b.flac"), {{"TITLE", {"palindrome"}}});
    Host host(setup);
    host.add_built_in(vantaro_get_interface, "vnt_quorvex.dll");
    host.load_components();
    ASSERT_THAT(console.lines, IsEmpty());

    const auto menu = quorvex::action_menu();
    EXPECT_TRUE(std::ranges::any_of(menu, [](const auto& entry) { return entry.name == "Backwards"; }));
    quorvex::TrackList tracks;
    for (const char* file : {"a.flac", "b.flac"})
        tracks.emplace_back(&host.tracks().get(folder.path(file), 0));
    ASSERT_TRUE(quorvex::run_stored_script({"", {{foreign_kind, ""}}}, tracks, nullptr, nullptr));
    host.wait_until_idle();
    TrackInfoRecord info;
    read_tags(folder.path("a.flac"), info);
    EXPECT_STREQ(info.value(info.find_field("TITLE"), 0), "etalS revo slluG");
    EXPECT_THAT(errors, ElementsAre("a title of no use")); // its exception came across
    host.close();
}

TEST_F(ComponentTest, TheHostsOwnServicesStayTheOnlyOnes) {
    install(ODD_COMPONENT, "odd.dll");
    Host host(setup);
    host.load_components();
    EXPECT_THAT(console.lines, ElementsAre(AllOf(HasSubstr("odd.dll is not used"), HasSubstr("for messages")),
                                           AllOf(HasSubstr("odd.dll is not used"), HasSubstr("for digests")),
                                           folder.path("components/odd.dll")
                                               + ": this component is not installed under the name that it "
                                                 "should have."));
    ServiceBase* service = nullptr;
    for (const Guid& class_guid : {PopupMessage::class_guid, DigestService::class_guid})
        EXPECT_EQ(host.count_services(host.find_service_class(class_guid)), 1U);
    host.create_service(host.find_service_class(PopupMessage::class_guid), 0, service);
    EXPECT_EQ(service, static_cast<ServiceBase*>(&message));
    host.close();
}

TEST_F(ComponentTest, AFilterWithoutTypeInformationEditsTracks) {
    install(ODD_COMPONENT, "odd.dll");
    folder.make_folder("songs");
    std::filesystem::copy_file(std::filesystem::path(QUORVEX_SAMPLES) / "album/02 - Gulls over Slate.flac",
                               folder.path("songs/a.flac"));
    Host host(setup);
    host.load_components();
    ArgumentDistributor distributor(host, [] { return std::size_t{0}; });
    distributor.offer("/shout");
    distributor.offer(folder.path("songs"));
    distributor.finish();
    host.wait_until_idle();
    TrackInfoRecord info;
    read_tags(folder.path("songs/a.flac"), info);
    EXPECT_STREQ(info.value(info.find_field("TITLE"), 0), "GULLS OVER SLATE");
    host.close();
}

TEST_F(ComponentTest, HearsOnceThatTheServicesEndHoweverTheHostEnds) {
    install(ODD_COMPONENT, "odd.dll");
    for (const bool is_closed : {true, false}) {
        console.lines.clear();
        {
            Host host(setup);
            host.load_components();
            console.lines.clear();
            if (is_closed)
                host.close();
        }
        EXPECT_THAT(console.lines, ElementsAre("The services end")) << is_closed;
    }
}

TEST_F(ComponentTest, ServicesAreFoundByClass) {
    Host host(setup);
    host.load_components();
    ServiceBase* service = nullptr;
    ServiceClass* consoles = host.find_service_class(HostConsole::class_guid);
    ASSERT_EQ(host.count_services(consoles), 1U);
    host.create_service(consoles, 0, service);
    EXPECT_EQ(service, static_cast<ServiceBase*>(&console));
    EXPECT_THROW(host.create_service(consoles, 1, service), exception_service_not_found);
    EXPECT_EQ(host.count_services(host.find_service_class(foreign_kind)), 0U);
    host.create_service(host.find_service_class(HostTagIO::class_guid), 0, service);
    EXPECT_TRUE(query_interface<HostTagIOUpdate>(*service));
    host.close();
}

TEST_F(ComponentTest, UpdatesRunOneAfterTheOther) {
    install(FOREIGN_COMPONENT, "foreign.dll");
    std::filesystem::copy_file(std::filesystem::path(QUORVEX_SAMPLES) / "album/02 - Gulls over Slate.flac",
                               folder.path("a.flac"));
    Host host(setup);
    host.add_built_in(vantaro_get_interface, "vnt_quorvex.dll");
    host.load_components();
    const quorvex::TrackList tracks{Ref<TrackHandle>(&host.tracks().get(folder.path("a.flac"), 0))};
    // Twice backwards is forwards, unless two updates have read the same old title.
    for (int i = 0; i < 20; ++i)
        quorvex::run_stored_script({"", {{foreign_kind, ""}}}, tracks, nullptr, nullptr);
    host.wait_until_idle();
    TrackInfoRecord info;
    read_tags(folder.path("a.flac"), info);
    EXPECT_STREQ(info.value(info.find_field("TITLE"), 0), "Gulls over Slate");
    EXPECT_THAT(errors, IsEmpty());
    host.close();
}

} // namespace
} // namespace vantaro::core
