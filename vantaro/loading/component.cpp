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

namespace vantaro::core {

namespace {

std::string file_name_of(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

std::string last_load_error() {
    const char* text = ::dlerror();
    return text ? text : "unknown error";
}

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
    components_.push_back(
        std::make_unique<Component>(Component{path, client, ComponentConfiguration(config_dir_, file_name)}));
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
        if (component.configuration.path().empty()) {
            MemoryWriter writer;
            component.client->get_config(writer, abort);
            component.configuration.start_without_file(writer.bytes());
        }
    } catch (const std::exception& error) {
        report_(error.what());
    }
}

void ComponentSet::announce_services(bool available) {
    for (const auto& component : components_)
        component->client->services_init(available);
}

bool ComponentSet::save_configurations() {
    bool all_saved = true;
    AbortSignal abort; // never set
    for (const auto& component : components_) {
        try {
            MemoryWriter writer;
            component->client->get_config(writer, abort);
            report_all(component->configuration.save(writer.bytes()).notices);
        } catch (const std::exception& error) {
            report_(error.what());
            all_saved = false;
        }
    }
    return all_saved;
}

bool ComponentSet::change_configurations(const std::function<void()>& change) {
    std::optional<FileLock> lock;
    if (!config_dir_.empty()) {
        make_folder(config_dir_);
        lock.emplace(config_dir_ + "/change.lock");
    }
    for (const auto& component : components_)
        read_configuration(*component);
    change();
    return save_configurations();
}

void ComponentSet::report_all(const std::vector<std::string>& lines) {
    for (const std::string& line : lines)
        report_(line);
}

} // namespace vantaro::core
