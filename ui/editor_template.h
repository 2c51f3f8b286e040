// The editor's window, as data.
#pragma once

#include "ui/dialog_template.h"

namespace quorvex {

namespace editor_control {
inline constexpr std::uint16_t action_list = 1001;
inline constexpr std::uint16_t add = 1004;
inline constexpr std::uint16_t remove = 1005;
inline constexpr std::uint16_t up = 1006;
inline constexpr std::uint16_t down = 1007;
inline constexpr std::uint16_t clear = 1008;
inline constexpr std::uint16_t script_name = 1020;
inline constexpr std::uint16_t save = 1021;
inline constexpr std::uint16_t load = 1022;
inline constexpr std::uint16_t delete_script = 1023;
inline constexpr std::uint16_t append = 1024;
inline constexpr std::uint16_t close_when_done = 1029;
inline constexpr std::uint16_t track_list = 1030;
inline constexpr std::uint16_t export_file = 1032;
inline constexpr std::uint16_t import_file = 1034;
inline constexpr std::uint16_t append_file = 1035;
inline constexpr std::uint16_t actions_group = 1051;
inline constexpr std::uint16_t scripts_group = 1052;
inline constexpr std::uint16_t tracks_group = 1053;
inline constexpr std::uint16_t change_count = 1060;
inline constexpr std::uint16_t run = 1;
inline constexpr std::uint16_t close = 2;
inline constexpr std::uint16_t help = 3;
} // namespace editor_control

namespace editor_rows {

using namespace editor_control;

inline constexpr Control controls[] = {
    {actions_group, ControlKind::group, "Actions to perform", {4, 4, 212, 120}},
    {action_list, ControlKind::list, "", {8, 14, 204, 88}},
    button(add, "&Add", {8, 106, 39, 15}),
    button(remove, "&Remove", {49, 106, 39, 15}),
    button(clear, "&Clear", {90, 106, 39, 15}),
    button(up, "&Up", {131, 106, 39, 15}),
    button(down, "&Down", {172, 106, 39, 15}),
    {scripts_group, ControlKind::group, "Scripts", {4, 128, 212, 60}},
    button(save, "Save", {8, 138, 48, 15}),
    button(load, "Load", {60, 138, 48, 15}),
    button(append, "Append", {112, 138, 48, 15}),
    button(delete_script, "Delete", {164, 138, 48, 15}),
    drop_down(script_name, 8, 155, 204, control_flag::sorted),
    button(export_file, "Export to file...", {8, 171, 66, 14}),
    button(import_file, "Import from file...", {76, 171, 66, 14}),
    button(append_file, "Append from file...", {144, 171, 66, 14}),
    {tracks_group, ControlKind::group, "Tracks to process", {220, 4, 180, 152}},
    {track_list, ControlKind::table, "", {224, 14, 172, 138}},
    // How many of the tracks the script changes.
    {change_count, ControlKind::label, "", {224, 160, 62, 10}},
    check_box(close_when_done, "Close this window when done", {288, 160, 110, 10}),
    button(help, "Help", {236, 172, 50, 15}),
    button(run, "Run", {292, 172, 50, 15}, control_flag::default_button),
    button(close, "Close", {348, 172, 50, 15}),
};

inline constexpr AnchorRow anchors[] = {
    {actions_group, 0, 0, 0, 1}, {action_list, 0, 0, 0, 1},     {add, 0, 1, 0, 1},
    {remove, 0, 1, 0, 1},        {clear, 0, 1, 0, 1},           {up, 0, 1, 0, 1},
    {down, 0, 1, 0, 1},          {scripts_group, 0, 1, 0, 1},   {save, 0, 1, 0, 1},
    {load, 0, 1, 0, 1},          {append, 0, 1, 0, 1},          {delete_script, 0, 1, 0, 1},
    {script_name, 0, 1, 0, 1},   {export_file, 0, 1, 0, 1},     {import_file, 0, 1, 0, 1},
    {append_file, 0, 1, 0, 1},   {tracks_group, 0, 0, 1, 1},    {track_list, 0, 0, 1, 1},
    {change_count, 0, 1, 1, 1},  {close_when_done, 1, 1, 1, 1}, {help, 1, 1, 1, 1},
    {run, 1, 1, 1, 1},           {close, 1, 1, 1, 1},
};

inline constexpr Resizing resizing{anchors, 400, 150, true};

} // namespace editor_rows

inline constexpr DialogTemplate editor_template{
    101, "Quorvex", 405, 193, editor_rows::controls, &editor_rows::resizing};

} // namespace quorvex
