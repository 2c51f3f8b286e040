#include "entry/context_menu.h"

#include "component/configuration.h"
#include "host/api/windows.h"
#include "script/script_library.h"
#include "tests/component/component_fixture.h"
#include "tests/support/fake_actions.h"
#include "vantaro/services/digest.h"

namespace quorvex {
namespace {

using namespace vantaro;

constexpr Guid fake_kind = test::kind(1);

class ModalGuard final : public test::Noting<ModalDialogGuard> {
public:
    using Noting::Noting;
    bool can_create_new() override { return can_create; }
    void poke_existing() override { host_.note("poked"); }
    bool can_create = true;
};

class FullQuestion final : public test::Noting<PopupQuestion> {
public:
    using Noting::Noting;
    std::uint32_t ask(const Request& request) override {
        host_.note(std::string(request.title) + ": " + request.message + " buttons "
                   + std::to_string(request.buttons) + ", default " + std::to_string(request.default_button)
                   + ", icon " + std::to_string(request.icon)
                   + (request.parent == host_.main_window() ? ", main window" : ""));
        return answer;
    }
    std::uint32_t answer = button::no;
};

class ContextMenu : public test::Component {
protected:
    ContextMenu() {
        host_.withdraw_all();
        host_.load(client_.get_service_list());
        host_.offer<HostTagIO>(tag_io_reference_);
        host_.offer<PopupQuestion>(question_);
        host_.offer<ModalDialogGuard>(guard_);
        host_.offer(Ref<DigestService>(&digests_));
        host_.offer<ActionType>(make_service<test::FakeType>(fake_kind, "known"));
        for (std::size_t i = 0; i < 101; ++i)
            tracks_.push_back(&tag_io_.track(std::to_string(i)));
    }
    ~ContextMenu() override { set_editor_opener(nullptr); }
    static void save(const char* name, const char* text) {
        script_library().store_script(name, std::vector{StoredAction{fake_kind, text}});
    }
    static void set_threshold(std::uint64_t threshold) {
        static_cast<ConfigUint64&>(configuration_variable(setting::quick_command_threshold)).set({threshold});
    }
    Ref<ContextMenuNode> node(ContextMenuItem& item, std::size_t count, const Guid& caller = {}) {
        return Ref<ContextMenuNode>::adopt(item.create_node(0, tracks_.data(), count, caller));
    }
    /// Name and description of a node; "-" when it is not shown.
    static std::string shown(ContextMenuNode& node) {
        StringSink name;
        StringSink description;
        std::uint32_t flags = 7;
        if (!node.get_display(name, flags))
            return "-";
        EXPECT_EQ(flags, 0U);
        return name.text() + (node.get_description(description) ? ": " + description.text() : "");
    }
    /// What the run logged in the tags of the first track, and the other events.
    std::string happened() {
        const std::string log = test::tags_text(std::exchange(tag_io_.track("0").tags, {}));
        std::string events = host_.take_events();
        // The names of all tracks say nothing more than the first.
        if (const std::size_t end = events.find(", main window, flags"); end != std::string::npos)
            if (const std::size_t start = events.find("update of"); start != std::string::npos)
                events.erase(start + 9, end - start - 9);
        return log.empty() ? events : events + '\n' + log;
    }

    ManageScripts manage_;
    SavedScripts scripts_;
    core::Md5Service digests_;
    const Ref<FullQuestion> question_ = make_service<FullQuestion>(host_);
    const Ref<ModalGuard> guard_ = make_service<ModalGuard>(host_);
    std::vector<TrackHandle*> tracks_;
};

TEST_F(ContextMenu, HasTwoItems) {
    std::string text;
    for_each_service<ContextMenuItem>([&](ContextMenuItem& item) {
        StringSink description;
        text += text_of([&](TextSink& out) { item.get_default_path(0, out); }) + '/'
                + text_of([&](TextSink& out) { item.get_item_name(0, out); }) + ' '
                + std::to_string(item.command_count()) + ' ' + to_text(item.get_item_guid(0)) + ' '
                + (item.get_item_description(0, description) ? description.text() : "-") + '\n';
    });
    EXPECT_EQ(text, "Tagging/Scripts 1 {E1DACD5C-534E-4E3B-94FC-00D5D2E6F9E7} -\n"
                    "Tagging/Manage scripts 1 {2BEB6836-C657-40EF-BB6E-D5B222AB89CE} "
                    "Performs advanced tag editing operations on specified items.\n");
}

TEST_F(ContextMenu, OpensTheEditor) {
    static std::string opened;
    opened.clear();
    const auto press = [&](std::size_t count, std::size_t index = 0) {
        manage_.execute(index, {}, tracks_.data(), count, {});
    };
    press(1);
    EXPECT_EQ(host_.take_events(), "") << "no console here to say that there is no editor";
    set_editor_opener([](const TrackList& tracks, WindowHandle owner) {
        opened +=
            std::to_string(tracks.size()) + (owner == host()->main_window() ? " in main window; " : "; ");
    });
    press(0);
    press(2, 1);
    std::thread([&] { press(2); }).join();
    EXPECT_EQ(opened, "");
    press(2);
    press(3);
    const auto command = node(manage_, 2);
    EXPECT_EQ(shown(*command),
              "Manage scripts: Performs advanced tag editing operations on specified items.");
    command->execute(tracks_.data(), 1);
    EXPECT_EQ(opened, "2 in main window; 3 in main window; 1 in main window; ");
}

TEST_F(ContextMenu, ListsSavedScripts) {
    const auto menu = [&](std::size_t count, const Guid& caller = {}) {
        const auto submenu = node(scripts_, count, caller);
        EXPECT_EQ(submenu->get_guid(), Guid());
        std::string text = shown(*submenu) + '\n';
        for (std::size_t i = 0; i < submenu->child_count(); ++i) {
            const auto child = Ref<ContextMenuNode>::adopt(submenu->child(i));
            text += to_text(child->get_guid()) + ' ' + shown(*child) + '\n';
        }
        return text;
    };
    EXPECT_EQ(menu(1), "-\n") << "an empty library";
    EXPECT_EQ(menu(0, menu_caller::command_list), "-\n");
    save("abc", "");
    save("[last used]", "");
    save("", "");
    // The GUIDs are the MD5 of the names.
    const std::string full =
        "Scripts: Runs a tag editor script.\n"
        "{98500190-D23C-B04F-D696-3F7D28E17F72} abc: Runs a tag editing script : \"abc\"\n"
        "{6BBCD3C1-5316-88FB-4F79-73E72EDEEA60} [last used]: "
        "Runs a tag editing script : \"[last used]\"\n"
        "{D98C1DD4-008F-04B2-E980-0998ECF8427E} : Runs a tag editing script : \"\"\n";
    EXPECT_EQ(menu(1), full);
    EXPECT_EQ(menu(0, menu_caller::command_list), full);
    EXPECT_EQ(menu(0), "-\n") << "an empty selection";
    EXPECT_EQ(menu(0, test::kind(1)), "-\n");
    std::thread([&] { EXPECT_FALSE(node(scripts_, 1)); }).join();
}

TEST_F(ContextMenu, RunsItsCopyOfAScript) {
    save("abc", "saved");
    const auto submenu = node(scripts_, 2);
    save("abc", "edited");
    script_library().delete_script(0);
    Ref<ContextMenuNode>::adopt(submenu->child(0))->execute(tracks_.data(), 2);
    EXPECT_EQ(happened(), "update of, main window, flags 8\nLOG=[saved 0/2]");
}

TEST_F(ContextMenu, RunsAScriptByItsGuid) {
    constexpr Guid abc = guid("{98500190-D23C-B04F-D696-3F7D28E17F72}");
    const auto run = [&](const Guid& command, std::size_t count) {
        scripts_.execute(0, command, tracks_.data(), count, {});
        return happened();
    };
    EXPECT_EQ(run(abc, 1), "") << "a name that is gone";
    save("x", "x");
    save("abc", "saved");
    EXPECT_EQ(run(abc, 3), "update of, main window, flags 8\nLOG=[saved 0/3]");
    EXPECT_EQ(run(Guid(), 3), "");
    EXPECT_EQ(run(abc, 0), "");
    std::thread([&] { scripts_.execute(0, abc, tracks_.data(), 3, {}); }).join();
    EXPECT_EQ(happened(), "");
    script_library().store_script("abc", std::vector{StoredAction{fake_kind, "x"}, StoredAction{}});
    EXPECT_EQ(run(abc, 3),
              "Warning: Some parts of the script failed to load. Continue ? buttons 3, default 1, "
              "icon 3, main window");
    question_->answer = button::ok;
    EXPECT_TRUE(run(abc, 3).ends_with("\nLOG=[x 0/3]"));
}

TEST_F(ContextMenu, AsksAboveTheThreshold) {
    save("abc", "s");
    const auto asked = [](const char* many) {
        return "Warning: You're about to update tags of " + std::string(many)
               + ". Continue? buttons 12, default 4, icon 3, main window";
    };
    const auto ran = [](std::size_t count) {
        return "update of, main window, flags 8\nLOG=[s 0/" + std::to_string(count) + "]";
    };
    constexpr std::uint64_t initial = 100;
    constexpr std::uint64_t never = std::uint64_t{1} << 32;
    const struct {
        std::uint64_t threshold;
        std::size_t count;
        std::uint32_t answer;
        std::string events;
    } rows[] = {
        {initial, 100, button::no, ran(100)},
        {initial, 101, button::no, asked("101 tracks")},
        {initial, 101, button::yes, asked("101 tracks") + '\n' + ran(101)},
        {initial, 101, 0, asked("101 tracks")},
        {initial, 101, button::yes | button::ok, asked("101 tracks")},
        {initial, 101, button::yes | button::no, asked("101 tracks") + '\n' + ran(101)},
        {0, 1, button::no, asked("1 track")},
        {0, 2, button::yes, asked("2 tracks") + '\n' + ran(2)},
        {0, 0, button::yes, ""},
        {never, 101, button::no, ran(101)},
        {never - 1, 101, button::no, ran(101)},
        {~std::uint64_t{0}, 101, button::no, ran(101)},
    };
    for (const auto& row : rows) {
        set_threshold(row.threshold);
        question_->answer = row.answer;
        const auto submenu = node(scripts_, 1);
        Ref<ContextMenuNode>::adopt(submenu->child(0))->execute(tracks_.data(), row.count);
        EXPECT_EQ(happened(), row.events) << row.threshold << ", " << row.count;
    }
    // No threshold that needs more than 32 bits is ever reached.
    question_->answer = button::no;
    set_threshold(never);
    EXPECT_TRUE(confirm_quick_command(never + 1));
    set_threshold(never - 1);
    EXPECT_FALSE(confirm_quick_command(never));
    EXPECT_EQ(host_.take_events(), asked("4294967296 tracks"));

    guard_->can_create = false;
    set_threshold(1);
    EXPECT_TRUE(confirm_quick_command(1));
    EXPECT_EQ(host_.take_events(), "");
    EXPECT_FALSE(confirm_quick_command(2));
    EXPECT_EQ(host_.take_events(), "poked") << "another dialog is open: no question";
}

} // namespace
} // namespace quorvex
