#include "vantaro/application/configuration_service.h"

#include "host/api/exceptions.h"

namespace vantaro::core {

bool ConfigurationService::change(MainThreadCall* change) {
    bool has_run = false;
    bool is_stored = false;
    const auto run = [&] {
        has_run = true;
        change->run();
    };
    try {
        is_stored = components_.change_configurations(run);
    } catch (const vantaro_io::exception_io& error) {
        if (has_run)
            throw;
        // Where nothing can be stored, the change lives as long as the process.
        report_(error.what());
        run();
    }
    if (on_changed)
        on_changed();
    return is_stored;
}

} // namespace vantaro::core
