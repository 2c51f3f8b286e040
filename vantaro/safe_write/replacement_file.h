// Making the new file that takes an old one's place.
#pragma once

#include "vantaro/safe_write/prepare.h"

#include <optional>
#include <string>

namespace vantaro::core {

/// A new file in the folder of `file`, with its attributes and the new content, flushed by nobody yet.
/// `temporary` becomes the name that it is to have before it takes the old one's.
/// Nothing when the old one has several names, or no file can be made there that is its equal.
/// Throws what OpenFile throws, for other reasons; nothing is left behind then.
std::optional<Replacement> make_replacement(const OpenFile& file, const FileEdit& edit,
                                            const TemporaryNames& names, std::string& temporary);

} // namespace vantaro::core
