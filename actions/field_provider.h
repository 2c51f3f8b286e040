// FieldProvider: the title-formatting fields that a run adds.
//
//     %_quorvex_index%, %list_index%    the track's position from 1, with as many digits as the total has
//     %_quorvex_total%, %list_total%    the number of tracks
//     %now%                             date and time: 2026-03-01 18:05:00
//
// Made afresh for every track; used by one run of a script.
#pragma once

#include "host/api/title_format.h"

#include <cstdint>

namespace quorvex {

class FieldProvider final : public vantaro::TitleFormatHook {
public:
    /// `index` counts from 0. `time` counts units of 100 ns since 1601-01-01 UTC; at 0 there is no %now%.
    FieldProvider(std::uint32_t index, std::uint32_t total, std::uint64_t time)
        : index_(std::uint64_t{index} + 1), total_(total), time_(time) {}

    bool process_field(const char* name, std::size_t length, vantaro::TitleFormatOutput& out,
                       bool& found) override;
    bool process_function(const char*, std::size_t, const vantaro::TitleFormatArguments&,
                          vantaro::TitleFormatOutput&, bool&) override {
        return false;
    }

private:
    std::uint64_t index_;
    std::uint32_t total_;
    std::uint64_t time_;
};

} // namespace quorvex
