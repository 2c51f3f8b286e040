// Components: loading their libraries, telling them where they are, keeping their configuration.
//
//     ComponentSet components(config_dir, report);
//     components.load_folder("/usr/lib/vantaro/components", api, registry);
//     components.announce_services(true);
//     ...
//     components.save_configurations();
//
// Libraries stay loaded until the process ends: services of theirs may still be held somewhere. Main thread
// only.
#pragma once

#include "vantaro/loading/service_registry.h"
#include "vantaro/storage/component_configuration.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core {

class ComponentSet {
public:
    /// Takes one line about something that went wrong.
    using Report = std::function<void(std::string_view line)>;

    ComponentSet(std::string config_dir, Report report);

    /// Loads every file `*.dll` of the folder, in the order of their names, but those with the file name of a
    /// component that is there already. A component that cannot be loaded is reported; the others are loaded
    /// all the same. So is a service that the registry refuses. A folder that does not exist has no
    /// components.
    void load_folder(const std::string& folder, HostApi& api, ServiceRegistry& registry);
    /// Takes in a component that is linked into the program, as if it had been loaded from `path`.
    void add_built_in(GetInterfaceFunction& get_interface, const std::string& path, HostApi& api,
                      ServiceRegistry& registry);

    /// Tells every component whether the host's services may be used.
    void announce_services(bool available);
    /// Hands the components what other processes have stored since. Failures are reported.
    void take_stored_changes();
    /// The same, and stores what has changed in the components' configurations. Failures are reported.
    /// Returns whether all could be stored.
    bool save_configurations();
    /// Makes a change to what the files hold now, and stores it, while no other process does the same. A
    /// change within a change is stored with it.
    /// Throws: vantaro_io::exception_io when the folder takes no lock, and what `change` throws.
    bool change_configurations(const std::function<void()>& change);

    std::size_t count() const { return components_.size(); }

private:
    struct Component {
        std::string path;
        ComponentClient* client;
        ComponentConfiguration configuration;
        /// Why it could not take what another process has stored; said once.
        std::string refusal;
    };

    void load_file(const std::string& path, HostApi& api, ServiceRegistry& registry);
    void read_configuration(Component& component);
    void take_stored_changes(Component& component);
    void report_all(const std::vector<std::string>& lines);

    std::string config_dir_;
    Report report_;
    std::vector<std::unique_ptr<Component>> components_;
    bool is_changing_ = false;
};

} // namespace vantaro::core
