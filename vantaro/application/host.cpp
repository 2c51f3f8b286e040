#include "vantaro/application/host.h"

#include "host/api/registered_services.h"
#include "vantaro/application/preferences.h"
#include "vantaro/common/own_program.h"
#include "vantaro/common/path_text.h"
#include "vantaro/storage/default_folders.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace vantaro::core {

namespace {

/// Beside the program's folder: "components" in a build, "lib/vantaro/components" where it is installed.
std::string own_component_dir() {
    const std::filesystem::path base = std::filesystem::path(own_program()).parent_path().parent_path();
    const std::filesystem::path installed = base / "lib" / "vantaro" / "components";
    return std::filesystem::exists(installed) ? installed : base / "components";
}

std::string folder_of_runs(const std::string& wanted_dir) {
    const std::string state_dir = wanted_dir.empty() ? default_state_dir() : wanted_dir;
    return state_dir.empty() ? state_dir : state_dir + "/runs";
}

unsigned thread_count(unsigned wanted) {
    constexpr unsigned most = 64;
    return std::clamp(wanted != 0 ? wanted : std::thread::hardware_concurrency(), 1U, most);
}

} // namespace

Host::Host(const HostSetup& setup)
    : interrupt_(*setup.interrupt), console_(*setup.console),
      component_dir_(setup.component_dir.empty() ? own_component_dir()
                                                 : std::filesystem::absolute(setup.component_dir).string()),
      main_thread_([this](const std::string& line) { report(line); }), clock_(main_thread_),
      code_page_(setup.code_page), runs_(folder_of_runs(setup.state_dir), real_system_calls()),
      tag_io_(tracks_, main_thread_, interrupt_.flag(), runs_, thread_count(setup.jobs), setup.make_watcher,
              [this](const std::string& line) { report(line); }),
      components_(setup.config_dir.empty() ? default_config_dir() : setup.config_dir,
                  [this](std::string_view line) { report(line); }),
      reported_(setup.reported) {
    set_path_code_page(setup.code_page);
    look_after_runs(setup.config_dir.empty() ? default_config_dir() : setup.config_dir, setup);
    tag_io_.set_recovery_report(line_reporter());
    registry_.add_own<HostConsole>(*setup.console);
    registry_.add_only<PopupMessage>(*setup.message, "messages");
    registry_.add_only<PopupQuestion>(*setup.question, "questions");
    registry_.add_only<MainThreadQueue>(main_thread_, "calls on the main thread");
    registry_.add_only<ClockService>(clock_, "the time");
    registry_.add_only<DigestService>(digest_, "digests");
    registry_.add_own<FileSystem>(file_system_);
    registry_.add_own<InputEntry>(tag_reader_);
    registry_.add_only<HostVersion>(version_, "the version");
    registry_.add_only<UndoneWork>(undone_, "what is not done");
    registry_.add_only<LegacyCodePage>(code_page_, "character sets");
    registry_.add_own<ConfigurationStorage>(configuration_service_);
    registry_.add_only<TitleFormatCompiler>(title_formatting_, "title formatting");
    registry_.add_own<TitleFormatDiagnosis>(title_format_diagnosis_);
    registry_.add_only<HostTagIO>(tag_io_, "tags");
}

Host::~Host() {
    if (!is_open_)
        return;
    // An exception has passed close().
    try {
        tag_io_.abort_all();
        wait_until_idle();
        close();
    } catch (const std::exception& error) {
        report(error.what());
    }
}

void Host::look_after_runs(const std::string& config_dir, const HostSetup& setup) {
    const auto report_line = [this](const std::string& line) { report_once(line); };
    const Preferences preferences = load_preferences(config_dir, report_line);
    tag_io_.set_keeps_times(preferences.keep_times);
    TagOptions tags = preferences.tags;
    tags.id3v2 = setup.id3v2.value_or(tags.id3v2);
    tag_io_.set_tag_options(std::move(tags));
    recover_runs(runs_, report_line);
    // Runs belong to the user, whatever settings this program was started with: nothing that cannot be taken
    // for the user's own wish makes them go.
    if (preferences.are_known && setup.config_dir.empty())
        runs_.set_retention(preferences.undo);
}

RecoveryReport Host::line_reporter() {
    return [this](const std::string& line) { main_thread_.post([this, line] { report_once(line); }); };
}

void Host::report_once(const std::string& line) {
    {
        const std::lock_guard lock(reported_mutex_);
        if (std::ranges::find(reported_, line) != reported_.end())
            return;
        reported_.push_back(line);
    }
    report(line);
    if (on_reported_once)
        on_reported_once(line);
}

std::vector<std::string> Host::reported() const {
    const std::lock_guard lock(reported_mutex_);
    return reported_;
}

void Host::add_built_in(GetInterfaceFunction& get_interface, const std::string& file_name) {
    components_.add_built_in(get_interface, component_dir_ + '/' + file_name, *this, registry_);
}

void Host::load_components() {
    components_.load_folder(component_dir_, *this, registry_);
    is_open_ = true;
    components_.announce_services(true);
    check_installation();
}

void Host::check_installation() {
    for (ServiceRecord* record : registry_.find(InstallationCheck::class_guid)->records)
        if (!service_of<InstallationCheck>(*record)->is_installed_correctly())
            report(registry_.component_of(*record)
                   + ": this component is not installed under the name that it should have.");
}

void Host::wait_until_idle() {
    QSocketNotifier interrupted(interrupt_.flag().wait_handle(), QSocketNotifier::Read);
    QObject::connect(&interrupted, &QSocketNotifier::activated, [&] {
        interrupted.setEnabled(false); // it stays readable
        tag_io_.abort_all();
    });
    main_thread_.run_until([&] { return tag_io_.is_idle(); });
}

bool Host::save_configurations() {
    return components_.save_configurations();
}

bool Host::change_configurations(const std::function<void()>& change) {
    return components_.change_configurations(change);
}

void Host::close() {
    is_open_ = false;
    components_.announce_services(false);
}

void Host::create_service(ServiceClass* service_class, std::size_t index, ServiceBase*& out) {
    if (index >= service_class->records.size())
        throw exception_service_not_found();
    service_class->records[index]->create_instance(out);
}

void Host::ensure_main_thread() {
    if (is_main_thread())
        return;
    std::fputs("Fatal internal error: a component called from another thread than the main thread\n", stderr);
    std::abort();
}

} // namespace vantaro::core
