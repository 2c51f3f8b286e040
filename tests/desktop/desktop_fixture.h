// The main window on a host of its own, with a copy of the sample album and one component's commands.
//
//     class Loading : public WithDesktop {};
//     TEST_F(Loading, ReadsAFolder) {
//         load(album_);
//         EXPECT_EQ(cell(0, Column::title), "Morning Tide");
//     }
#pragma once

#include "tests/support/temporary_folder.h"
#include "vantaro/desktop/main_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vantaro::test {

using namespace vantaro::core;

class FixedAnswer final : public StaticService<PopupQuestion> {
public:
    std::uint32_t ask(const Request& request) override {
        asked.push_back(request.message);
        return answer;
    }
    std::uint32_t answer = button::yes;
    std::vector<std::string> asked;
};

class NotedMessages final : public StaticService<PopupMessage> {
public:
    void show(const char* text, std::size_t length, const char*, std::uint32_t) override {
        texts.emplace_back(text, length);
    }
    std::vector<std::string> texts;
};

/// Sets GENRE, at leisure.
class SetGenre final : public HeapService<TrackFilter> {
public:
    explicit SetGenre(int milliseconds) : milliseconds_(milliseconds) {}
    bool apply(TrackHandle*, const FileStats&, TrackInfo& info) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds_));
        info.set_field("GENRE", "Changed");
        return true;
    }

private:
    const int milliseconds_;
};

/// Two commands, one that edits and one that fails, and a submenu. Names have signs in them that mean
/// something elsewhere.
class TestItem final : public StaticService<ContextMenuItem> {
public:
    static constexpr Guid edit_guid = guid("{11111111-2222-3333-4444-555555555555}");

    explicit TestItem(Host& host) : host_(host) {}

    std::size_t command_count() override { return 3; }
    void get_item_name(std::size_t command, TextSink& out) override { set_text(out, names[command]); }
    void get_default_path(std::size_t, TextSink& out) override { set_text(out, "Tagging/Test"); }
    Guid get_item_guid(std::size_t command) override { return command == 0 ? edit_guid : Guid{}; }
    bool get_item_description(std::size_t, TextSink&) override { return false; }
    ContextMenuNode* create_node(std::size_t command, TrackHandle* const*, std::size_t, const Guid&) override;
    void execute(std::size_t, const Guid&, TrackHandle* const*, std::size_t, const Guid&) override {}

    static constexpr const char* names[] = {"Set genre", "Fail", "Rock & Roll/AC", "A/B"};
    /// How long the filter takes for a track.
    int milliseconds = 0;
    /// How many tracks the last command was for, and how many of these were held.
    std::size_t count = 0;
    std::size_t held = 0;

private:
    friend class TestNode;
    Host& host_;
};

class TestNode final : public HeapService<ContextMenuNode> {
public:
    TestNode(TestItem& item, std::size_t command) : item_(item), command_(command) {}
    bool get_display(TextSink& name, std::uint32_t&) override {
        set_text(name, TestItem::names[command_]);
        return true;
    }
    bool get_description(TextSink&) override { return false; }
    Guid get_guid() override { return {}; }
    std::size_t child_count() override { return command_ == 2 ? 1 : 0; }
    ContextMenuNode* child(std::size_t) override { return make_service<TestNode>(item_, 3U).detach(); }
    void execute(TrackHandle* const* tracks, std::size_t count) override {
        if (command_ == 1)
            throw vantaro_io::exception_io("no such luck");
        item_.count = count;
        item_.held = 0;
        for (std::size_t i = 0; i < count; ++i)
            item_.held += static_cast<Track*>(tracks[i])->held() ? 1U : 0U;
        item_.host_.tag_io().update_async(tracks, count, make_service<SetGenre>(item_.milliseconds).get(),
                                          item_.host_.main_window(), 0, nullptr);
    }

private:
    TestItem& item_;
    const std::size_t command_;
};

inline ContextMenuNode* TestItem::create_node(std::size_t command, TrackHandle* const*, std::size_t count_of,
                                              const Guid& caller) {
    if (count_of == 0 && caller != menu_caller::command_list)
        return nullptr;
    return make_service<TestNode>(*this, command).detach();
}

class WithDesktop : public testing::Test {
protected:
    WithDesktop() {
        std::filesystem::copy(QUORVEX_SAMPLES "/album", album_);
        open();
    }
    ~WithDesktop() override { close_window(); }

    /// A window as the program opens it; the one before is closed.
    void open() {
        close_window();
        window_ = std::make_unique<MainWindow>(
            host_, WindowSetup{console_, question_, dialogs_, folder_.path("config")});
        host_.set_main_window(static_cast<QWidget*>(window_.get()));
        window_->show();
    }
    void close_window() {
        if (!window_)
            return;
        window_->close_at_once();
        host_.wait_until_idle();
        host_.set_main_window(nullptr);
        window_.reset();
    }
    void load(const std::string& location) {
        window_->add({location});
        ASSERT_TRUE(wait_for([this] { return !window_->loader().is_busy(); }));
    }
    /// Handles events until it is so; whether it came to be.
    static bool wait_for(const std::function<bool()>& is_so) { return QTest::qWaitFor(is_so, 20000); }
    bool wait_for_updates() {
        return wait_for([this] { return host_.tag_io().is_idle() && !window_->loader().is_busy(); });
    }

    std::string cell(int row, Column column, int role = Qt::DisplayRole) const {
        TrackModel& model = window_->model();
        return model.data(model.index(row, static_cast<int>(column)), role).toString().toStdString();
    }
    std::vector<std::string> column(Column column) const {
        std::vector<std::string> cells;
        for (int row = 0; row < window_->model().rowCount(); ++row)
            cells.push_back(cell(row, column));
        return cells;
    }
    void select(int row) const {
        window_->list().selectionModel()->setCurrentIndex(
            window_->model().index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    QAction* action(const QString& text) const {
        for (QAction* found : window_->findChildren<QAction*>())
            if (found->text() == text)
                return found;
        return nullptr;
    }
    template <class Widget>
    Widget* part(const char* name) const {
        return window_->findChild<Widget*>(QString::fromLatin1(name));
    }

    const TemporaryFolder folder_;
    const std::string album_ = folder_.path("album");
    Interrupt interrupt_;
    Terminal terminal_;
    PanelConsole console_{&terminal_};
    FixedAnswer question_;
    NotedMessages messages_;
    DialogRegistry dialogs_;
    std::unique_ptr<MainWindow> window_;
    Host host_{setup()};
    TestItem item_{host_};
    const bool offered_ = (host_.services().add_own<ContextMenuItem>(item_), true);

private:
    HostSetup setup() {
        HostSetup setup;
        setup.config_dir = folder_.path("config");
        setup.state_dir = folder_.path("state");
        setup.component_dir = folder_.path("components");
        setup.jobs = 2;
        setup.interrupt = &interrupt_;
        setup.console = &console_;
        setup.message = &messages_;
        setup.question = &question_;
        setup.make_watcher = [this](std::size_t total, WindowHandle parent) {
            return window_->watch(total, static_cast<QWidget*>(parent));
        };
        return setup;
    }
};

} // namespace vantaro::test
