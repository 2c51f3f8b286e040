// From the tree of a pattern to its program.
//
// Any thread.
#pragma once

#include "vantaro/titleformat/program.h"
#include "vantaro/titleformat/title_format.h"

#include <variant>

namespace vantaro::core {

/// What becomes of a function that is not known: a hook may know it when it runs.
enum class UnknownFunctions { left_to_hooks, refused };

std::variant<Program, TitleFormatError>
compile_program(std::string_view pattern, UnknownFunctions unknown = UnknownFunctions::left_to_hooks);

} // namespace vantaro::core
