// The editor as a real window, over tracks and a host made of memory.
//
//     Editor editor = open_editor("a b c");
//     editor.add("Remove all fields");
//     EXPECT_EQ(editor.previews(), "TITLE removed|TITLE removed|TITLE removed|");
#pragma once

#include "engine/background_threads.h"
#include "host/api/input.h"
#include "script/script_library.h"
#include "tests/ui/dialogs_fixture.h"
#include "tests/ui/editor_driver.h"
#include "ui/widgets/editor_window.h"
#include "vantaro/services/main_thread.h"

namespace quorvex::test {

/// Reads what the tracks of the fake host have.
class FakeInput final : public vantaro::HeapService<vantaro::InputEntry> {
public:
    explicit FakeInput(FakeTagIO& tag_io) : tag_io_(tag_io) {}
    bool reads(const char*) override { return true; }
    vantaro::InputInfoReader* open_for_info_read(vantaro::File*, const char* path,
                                                 vantaro::AbortFlag&) override {
        const std::string name = path;
        if (name.starts_with("broken"))
            throw vantaro_io::exception_io_data();
        class Reader final : public vantaro::HeapService<vantaro::InputInfoReader> {
        public:
            explicit Reader(const vantaro::TrackInfoRecord& tags) : tags_(tags) {}
            vantaro::FileStats get_file_stats(vantaro::AbortFlag&) override { return {}; }
            void get_info(std::uint32_t, vantaro::TrackInfo& info, vantaro::AbortFlag&) override {
                info.copy(tags_);
            }

        private:
            const vantaro::TrackInfoRecord tags_;
        };
        return vantaro::make_service<Reader>(tag_io_.track(name).tags).detach();
    }

private:
    FakeTagIO& tag_io_;
};

class Editors : public Dialogs {
protected:
    Editors() {
        host_.offer<vantaro::MainThreadQueue>(Ref<vantaro::MainThreadQueue>(&main_thread_));
        host_.offer<vantaro::InputEntry>(vantaro::make_service<FakeInput>(tag_io_));
        for (const char* path : {"a", "b", "c"}) {
            FakeTrack& track = tag_io_.track(path);
            track.tags = tags("TITLE=[Song " + std::string(path) + "] ARTIST=[x]");
            track.is_held = true;
        }
    }
    ~Editors() override {
        owner_.reset();
        run_deleted();
        join_background_threads();
        QCoreApplication::processEvents();
        host_.withdraw_all(); // it would outlive the queue
    }

    Editor open_editor(const std::string& paths) {
        open_editor_window(tag_io_.tracks(paths), static_cast<QWidget*>(owner_.get()));
        const auto windows = owner_->findChildren<QDialog*>(Qt::FindDirectChildrenOnly);
        QApplication::setActiveWindow(windows.back());
        return Editor(windows.back());
    }
    /// Saves a script of these actions.
    void save_script(const std::string& name, const std::vector<StoredAction>& actions) {
        script_library().store_script(name, actions);
    }

    vantaro::core::MainThread main_thread_{[this](const std::string& line) { host_.note(line); }};
};

} // namespace quorvex::test
