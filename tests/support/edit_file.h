// Edits a file as another program would: at once, without a journal.
#pragma once

#include "vantaro/common/file_source.h"
#include "vantaro/tags/tag_file.h"

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vantaro::test {

inline void edit_file(const std::string& path, const std::vector<core::FieldChange>& changes) {
    const core::FileEdit edit = core::write_tags(core::FileSource::open(path), changes).edit;
    std::ifstream in(path, std::ios::binary);
    const std::string old{std::istreambuf_iterator<char>(in), {}};
    std::ofstream(path, std::ios::binary) << core::edited_bytes(edit, old);
}

} // namespace vantaro::test
