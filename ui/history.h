// DropDownHistory: what was confirmed in a kind of box before, most recent first, kept in a text variable of
// the configuration, each entry followed by a line feed.
//
//     field_name_history.add("GENRE");
//     for (const std::string& name : field_name_history.entries()) ...
//
// Entries are UTF-8 without line feeds and are compared byte for byte. Main thread.
#pragma once

#include "component/configuration.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

class DropDownHistory {
public:
    constexpr DropDownHistory(const vantaro::Guid& variable, std::size_t capacity)
        : variable_(variable), capacity_(capacity) {}

    std::vector<std::string> entries() const;
    /// Puts a text at the front, line feeds as "|"; an empty one changes nothing. Returns whether it was
    /// there already. A history that is over its capacity is cut to it before a new text comes in, so that it
    /// holds one more than its capacity at most.
    bool add(std::string_view text) const;
    /// Returns whether the text was an entry.
    bool remove(std::string_view text) const;
    /// Leaves no entry, of the initial ones neither.
    void wipe() const;

private:
    void store(const std::vector<std::string>& entries) const;

    vantaro::Guid variable_;
    std::size_t capacity_;
};

inline constexpr DropDownHistory field_name_history(setting::field_name_history, 32);
inline constexpr DropDownHistory formatting_pattern_history(setting::formatting_pattern_history, 10);
inline constexpr DropDownHistory guess_pattern_history(setting::guess_pattern_history, 10);

} // namespace quorvex
