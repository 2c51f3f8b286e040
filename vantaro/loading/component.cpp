#include "vantaro/loading/component.h"

#include "host/api/memory_stream.h"
#include "vantaro/loading/library_file.h"
#include "vantaro/services/abort_signal.h"
#include "vantaro/storage/files.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace vantaro::core {

namespace {

std::string file_name_of(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

std::string last_load_error() {
    const char* text = ::dlerror();
    return text ? text : "unknown error";
}

/// All that the component has to store.
std::string written_by(ComponentClient& client) {
    AbortSignal abort; // never set
    MemoryWriter writer;
    client.get_config(writer, abort);
    return writer.bytes();
}

/// True while it is there.
class Changing {
public:
    explicit Changing(bool& flag) : flag_(flag) { flag_ = true; }
    ~Changing() { flag_ = false; }
    Changing(const Changing&) = delete;
    Changing& operator=(const Changing&) = delete;

private:
    bool& flag_;
};

} // namespace

ComponentSet::ComponentSet(std::string config_dir, Report report)
    : config_dir_(std::move(config_dir)), report_(std::move(report)) {}

void ComponentSet::load_folder(const std::string& folder, HostApi& api, ServiceRegistry& registry) {
    std::error_code error;
    std::vector<std::string> paths;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        if (it->path().extension() == ".dll")
            paths.push_back(it->path().string());
    if (error && error != std::errc::no_such_file_or_directory)
        report_(folder + ": " + error.message());
    std::ranges::sort(paths);
    for (const std::string& path : paths) {
        const bool known = std::ranges::any_of(components_, [&](const auto& component) {
            return file_name_of(component->path) == file_name_of(path);
        });
        if (!known)
            load_file(path, api, registry);
    }
}

void ComponentSet::load_file(const std::string& path, HostApi& api, ServiceRegistry& registry) {
    if (const std::string damage = find_damage(path); !damage.empty()) {
        report_("Could not load component " + path + ": " + damage);
        return;
    }
    void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        report_("Could not load component " + last_load_error());
        return;
    }
    void* symbol = ::dlsym(library, get_interface_name);
    if (!symbol) {
        report_("Could not load component " + path + ": it has no function " + get_interface_name);
        ::dlclose(library);
        return;
    }
    try {
        add_built_in(*reinterpret_cast<GetInterfaceFunction*>(symbol), path, api, registry);
    } catch (const std::exception& error) {
        report_("Could not load component " + path + ": " + error.what());
    }
}

void ComponentSet::add_built_in(GetInterfaceFunction& get_interface, const std::string& path, HostApi& api,
                                ServiceRegistry& registry) {
    ComponentClient* client = get_interface(&api);
    if (const std::uint32_t version = client->get_version(); version != component_interface_version) {
        report_("Could not load component " + path + ": it has interface version " + std::to_string(version)
                + ", this program has " + std::to_string(component_interface_version));
        return;
    }
    const std::string file_name = file_name_of(path);
    components_.push_back(std::make_unique<Component>(
        Component{path, client, ComponentConfiguration(config_dir_, file_name), {}}));
    for (ServiceRecord* record = client->get_service_list(); record; record = record->next())
        if (const std::string_view purpose = registry.add(*record, path); !purpose.empty())
            report_("A service of component " + path + " is not used: this program has its own for "
                    + std::string(purpose) + ", and there can be only one.");
    client->set_library_path(path.c_str(), file_name.c_str());
    read_configuration(*components_.back());
}

void ComponentSet::read_configuration(Component& component) {
    AbortSignal abort; // never set
    try {
        const ComponentConfiguration::LoadResult loaded = component.configuration.load();
        report_all(loaded.notices);
        MemoryReader reader(loaded.bytes);
        try {
            component.client->set_config(reader, abort);
        } catch (const std::exception& error) {
            report_(component.configuration.set_aside(error.what()));
        }
        component.configuration.complete(written_by(*component.client));
    } catch (const std::exception& error) {
        report_(error.what());
    }
}

void ComponentSet::announce_services(bool available) {
    for (const auto& component : components_)
        component->client->services_init(available);
}

void ComponentSet::take_stored_changes() {
    for (const auto& component : components_) {
        try {
            take_stored_changes(*component);
        } catch (const std::exception& error) {
            report_(error.what());
        }
    }
}

void ComponentSet::take_stored_changes(Component& component) {
    const std::string before = written_by(*component.client);
    AbortSignal abort; // never set
    component.configuration.take_changes(before, [&](std::string_view records) {
        try {
            MemoryReader reader(records);
            component.client->set_config(reader, abort);
            component.refusal.clear();
            return true;
        } catch (const std::exception& error) {
            // It may have taken half of them, which is not to be stored.
            MemoryReader reader(before);
            component.client->set_config(reader, abort);
            if (std::exchange(component.refusal, error.what()) != error.what())
                report_(component.configuration.path()
                        + ": what another process has stored could not be used (" + error.what() + ")");
            return false;
        }
    });
}

bool ComponentSet::save_configurations() {
    bool all_saved = true;
    for (const auto& component : components_) {
        try {
            take_stored_changes(*component);
            const std::string bytes = written_by(*component->client);
            report_all(component->configuration.save(bytes).notices);
        } catch (const std::exception& error) {
            report_(error.what());
            all_saved = false;
        }
    }
    return all_saved;
}

bool ComponentSet::change_configurations(const std::function<void()>& change) {
    if (is_changing_) {
        change();
        return true;
    }
    std::optional<FileLock> lock;
    if (!config_dir_.empty()) {
        make_folder(config_dir_);
        lock.emplace(config_dir_ + "/change.lock");
    }
    take_stored_changes();
    {
        const Changing changing(is_changing_);
        change();
    }
    return save_configurations();
}

void ComponentSet::report_all(const std::vector<std::string>& lines) {
    for (const std::string& line : lines)
        report_(line);
}

} // namespace vantaro::core
