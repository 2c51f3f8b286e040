// The host, put together: services, components, tracks, updates. What shows progress and asks questions (a
// terminal, a window) is handed in.
//
//     QCoreApplication qt(argc, argv);
//     HostSetup setup;
//     ...
//     Host host(setup);
//     host.load_components();
//     ...
//     host.wait_until_idle();
//     host.save_configurations();
//     host.close();
//
// Main thread only, but for what HostApi allows.
#pragma once

#include "host/api/user_interaction.h"
#include "vantaro/application/configuration_service.h"
#include "vantaro/journal/recovery.h"
#include "vantaro/loading/component.h"
#include "vantaro/loading/service_registry.h"
#include "vantaro/services/clock.h"
#include "vantaro/services/digest.h"
#include "vantaro/services/local_files.h"
#include "vantaro/services/main_thread.h"
#include "vantaro/services/undone_work.h"
#include "vantaro/services/version.h"
#include "vantaro/terminal/interrupt.h"
#include "vantaro/titleformat/title_format.h"
#include "vantaro/tracks/track_table.h"
#include "vantaro/update/tag_io.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vantaro::core {

struct HostSetup {
    /// Where configurations are stored; empty for the user's own folder.
    std::string config_dir;
    /// Where the journals of runs are kept; empty for the user's own folder.
    std::string state_dir;
    /// Where components lie; empty for the folder that belongs to the program.
    std::string component_dir;
    /// How many threads read and how many write files; 0 for as many as the machine has processors.
    unsigned jobs = 0;

    /// What was reported once already, by the process that started this one.
    std::vector<std::string> reported;

    /// What names of files, and texts in files that say nothing of it, are in where they are not UTF-8.
    std::string code_page = "windows-1252";

    /// Which version of ID3v2 is written; nothing for what the user prefers.
    std::optional<Id3v2Policy> id3v2;

    /// These outlive the host.
    Interrupt* interrupt = nullptr;
    HostConsole* console = nullptr;
    PopupMessage* message = nullptr;
    PopupQuestion* question = nullptr;
    TagIO::MakeWatcher make_watcher;
};

class Host final : public HostApi {
public:
    /// Puts files right that a run left behind when it was cut off; what it finds is reported.
    explicit Host(const HostSetup& setup);
    ~Host();

    /// Takes in a component that is linked into the program. Before load_components.
    void add_built_in(GetInterfaceFunction& get_interface, const std::string& file_name);
    /// Loads the components of the component folder and announces the host's services to all.
    void load_components();
    /// Handles events until no update is under way. An interrupt ends updates early.
    void wait_until_idle();
    /// Hands the components what other processes have stored since; what fails is reported.
    void take_stored_configurations() { components_.take_stored_changes(); }
    /// The same, and stores what has changed in the components' configurations. Returns whether all could be
    /// stored; what could not is reported.
    bool save_configurations();
    /// The same for a change to the configurations as they are stored now, which other processes may have
    /// changed since the start. Throws: what ComponentSet::change_configurations throws.
    bool change_configurations(const std::function<void()>& change);
    /// Tells the components that the services end. Called once, when idle. Without it the destructor ends
    /// what is under way, and does this.
    void close();

    ServiceRegistry& services() { return registry_; }
    TrackTable& tracks() { return tracks_; }
    TagIO& tag_io() { return tag_io_; }
    /// The runs of this user that can be taken back.
    RunStore& runs() { return runs_; }
    /// Where components change what is stored.
    ConfigurationService& configuration_service() { return configuration_service_; }
    const AbortSignal& interrupt() const { return interrupt_.flag(); }
    /// Prints a line on the console.
    void report(std::string_view line) { console_.print(line.data(), line.size()); }
    /// The same, but not what was reported in this way before: a folder that nobody gets into is told of
    /// once. Any thread.
    void report_once(const std::string& line);
    /// The same for other threads: the line is printed when the main thread gets to it.
    RecoveryReport line_reporter();
    /// Prints why something that was asked for is not done, and counts it.
    void report_undone(const std::string& why) { undone_.note(why.c_str()); }
    /// How often that was reported, by components as well. Updates, and locations that lead nowhere, tell of
    /// themselves.
    std::size_t undone_count() const { return undone_.count(); }
    /// What was reported once, in its order.
    std::vector<std::string> reported() const;
    /// Called with each line that is reported once from now on, on the thread that reports it. Set while no
    /// update is under way.
    std::function<void(const std::string& line)> on_reported_once;

    /// What components take for the main window; nullptr for none, as at first. It outlives its being set.
    void set_main_window(WindowHandle window) { main_window_ = window; }

    /// Calls `visit(I&)` for every service of the class.
    template <class I, class Visit>
    void for_each_service(Visit&& visit) {
        for (ServiceRecord* record : registry_.find(I::class_guid)->records)
            visit(*service_of<I>(*record));
    }

    ServiceClass* find_service_class(const Guid& class_guid) override { return registry_.find(class_guid); }
    void create_service(ServiceClass* service_class, std::size_t index, ServiceBase*& out) override;
    std::size_t count_services(ServiceClass* service_class) override { return service_class->records.size(); }
    WindowHandle main_window() override { return main_window_; }
    void ensure_main_thread() override;
    bool is_main_thread() override { return main_thread_.is_current(); }

private:
    template <class I>
    static Ref<I> service_of(ServiceRecord& record) {
        ServiceBase* service = nullptr;
        record.create_instance(service);
        return Ref<I>::adopt(static_cast<I*>(service));
    }
    void check_installation();
    void look_after_runs(const std::string& config_dir, const HostSetup& setup);

    Interrupt& interrupt_;
    HostConsole& console_;
    const std::string component_dir_;
    WindowHandle main_window_ = nullptr;
    /// Whether the components have been told that services may be used.
    bool is_open_ = false;
    ServiceRegistry registry_;
    MainThread main_thread_;
    Clock clock_;
    Md5Service digest_;
    LocalFileSystem file_system_{interrupt_.flag()};
    VersionService version_;
    UndoneWorkNotes undone_{[this](const std::string& line) { report(line); }};
    CodePageService code_page_;
    TitleFormatting title_formatting_;
    TitleFormattingDiagnosis title_format_diagnosis_;
    RunStore runs_;
    TrackTable tracks_;
    TagIO tag_io_;
    TagReader tag_reader_{tag_io_.tag_options()};
    ComponentSet components_;
    ConfigurationService configuration_service_{components_,
                                                [this](const std::string& line) { report(line); }};
    mutable std::mutex reported_mutex_; // guards what follows
    std::vector<std::string> reported_;
};

} // namespace vantaro::core
