// Tags straight from a file, through the host's readers.
//
//     Ref<vantaro::InputInfoReader> reader = input_entry::g_open_for_info_read(nullptr, path, abort);
//
// Any thread.
#pragma once

#include "host/access.h"
#include "host/api/input.h"

namespace quorvex {

class input_entry {
public:
    /// Opens the file with the first reader that takes files of its name.
    /// Throws: vantaro_io::exception_io_data when none does, and what InputEntry::open_for_info_read throws.
    static Ref<vantaro::InputInfoReader> g_open_for_info_read(vantaro::File* file_hint, const char* path,
                                                              vantaro::AbortFlag& abort);
};

} // namespace quorvex
