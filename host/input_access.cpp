#include "host/input_access.h"

#include "host/shared/failure.h"

namespace quorvex {

using namespace vantaro;

Ref<InputInfoReader> input_entry::g_open_for_info_read(File* file_hint, const char* path, AbortFlag& abort) {
    uCallStackTracker marker("opening a file for its tags");
    const std::size_t count = service_count(InputEntry::class_guid);
    for (std::size_t index = 0; index < count; ++index) {
        const Ref<InputEntry> entry = create_service<InputEntry>(index);
        if (entry->reads(path))
            return Ref<InputInfoReader>::adopt(entry->open_for_info_read(file_hint, path, abort));
    }
    throw vantaro_io::exception_io_data();
}

} // namespace quorvex
