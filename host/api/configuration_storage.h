// Where components' configurations are stored: several processes share it.
//
//     storage->change(make_service<AddScript>(script).get());
#pragma once

#include "host/api/system.h"

namespace vantaro {

/// Main thread only.
class ConfigurationStorage : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{8D2F61B4-07CE-4A95-B3E8-5F94D0A17C26}");

    /// For a change to what is stored, rather than to what was stored when the process started. First hands
    /// every component what other processes have stored since (ComponentClient::set_config), then runs
    /// `change`, then stores every component's configuration; no other process does the same meanwhile.
    /// Returns whether it is stored. When it is not, the host tells the user and tries again later; the
    /// change has been made all the same. A change within a change is part of it, and stored with it: true.
    /// Throws: what `change` throws.
    virtual bool change(MainThreadCall* change) = 0;

protected:
    ~ConfigurationStorage() = default;
};

} // namespace vantaro
