// Latin letters without their accents.
//
//     unaccented("Motörhead")      // "Motorhead"
//
// Any thread.
#pragma once

#include <string>
#include <string_view>

namespace vantaro::core {

/// Each Latin letter as its compatibility decomposition has it, without combining marks; all else, other
/// scripts among it, as it stands.
std::string unaccented(std::string_view text);

} // namespace vantaro::core
