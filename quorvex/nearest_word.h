// The word that somebody meant who has mistyped it.
//
//     if (const std::string* meant = nearest_word("rnu", verbs)) ...        // "run"
//
// Any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quorvex::command {

/// The first of the words that are nearest to what was typed, whatever the case of ASCII letters; nullptr
/// when none is near. It is one of `words`.
const std::string* nearest_word(std::string_view typed, std::span<const std::string> words);

} // namespace quorvex::command
