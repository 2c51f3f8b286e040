// From the tree of a pattern to its program.
//
// Any thread.
#pragma once

#include "vantaro/titleformat/program.h"
#include "vantaro/titleformat/title_format.h"

#include <variant>

namespace vantaro::core {

std::variant<Program, TitleFormatError> compile_program(std::string_view pattern);

} // namespace vantaro::core
