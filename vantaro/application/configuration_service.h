// What components store, changed as it is stored now (host/api/configuration_storage.h). Main thread only.
#pragma once

#include "host/api/configuration_storage.h"
#include "vantaro/loading/component.h"

#include <functional>
#include <string>

namespace vantaro::core {

class ConfigurationService final : public StaticService<ConfigurationStorage> {
public:
    /// `report` takes one line about something that went wrong.
    ConfigurationService(ComponentSet& components, std::function<void(const std::string& line)> report)
        : components_(components), report_(std::move(report)) {}

    /// Called after each change, whether it could be stored or not.
    std::function<void()> on_changed;

    bool change(MainThreadCall* change) override;

private:
    ComponentSet& components_;
    const std::function<void(const std::string& line)> report_;
};

} // namespace vantaro::core
