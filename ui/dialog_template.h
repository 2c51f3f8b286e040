// Dialog templates: what stands where in a dialog, as data.
//
//     constexpr Control controls[] = {
//         label("Field name:", {4, 4, 66, 8}),
//         field_name_box(1024, 4, 12, 244),
//         ok_button(140, 56),
//         cancel_button(196, 56),
//     };
//     constexpr DialogTemplate split{129, "Split field by separator", 252, 76, controls};
//
// Positions and sizes are in dialog units, from the top left corner of the client area: four horizontal units
// are the average width of a character of the dialog's font, eight vertical ones its height. The order of the
// controls is the tab order; a label names the control behind it.
#pragma once

#include <cstdint>
#include <span>

namespace quorvex {

struct DialogRect {
    int x;
    int y;
    int width;
    int height;
};

enum class ControlKind : std::uint8_t {
    label,
    edit,
    drop_down,
    check_box,
    button,
    /// A frame with a title around the controls behind it.
    group,
    /// A list of texts, one of which may be selected.
    list,
    /// A table of any number of rows, which are asked for when they are shown.
    table,
};

/// Bits of Control::flags.
namespace control_flag {
/// What is typed becomes upper case.
inline constexpr unsigned upper_case = 1;
/// The list of a drop-down box is in alphabetical order.
inline constexpr unsigned sorted = 2;
/// A text may be wider than its box. Without it, typing stops at the width of the box.
inline constexpr unsigned scrolls = 4;
/// Several lines; Enter starts a new one. Line breaks of what is typed are CR LF.
inline constexpr unsigned multi_line = 8;
/// The button that Enter presses.
inline constexpr unsigned default_button = 16;
} // namespace control_flag

struct Control {
    /// Nothing looks for a control of this id.
    static constexpr std::uint16_t no_id = 0xFFFF;

    std::uint16_t id;
    ControlKind kind;
    const char* text;
    DialogRect place;
    unsigned flags = 0;
    /// How many UTF-16 units may be typed; 0 for any number.
    int limit = 0;
};

/// How the edges of a control follow the dialog as it grows: the share of the growth that each moves by.
struct AnchorRow {
    std::uint16_t id;
    double left;
    double top;
    double right;
    double bottom;
};

/// How a dialog is resized.
struct Resizing {
    std::span<const AnchorRow> rows;
    int minimum_width;
    int minimum_height;
    bool size_grip;
};

struct DialogTemplate {
    std::uint16_t id;
    const char* title;
    int width;
    int height;
    std::span<const Control> controls;
    /// nullptr for a dialog of fixed size.
    const Resizing* resizing = nullptr;
};

/// The ids of the buttons that end a dialog.
inline constexpr std::uint16_t ok_id = 1;
inline constexpr std::uint16_t cancel_id = 2;

constexpr Control label(const char* text, const DialogRect& place) {
    return {Control::no_id, ControlKind::label, text, place};
}

/// A drop-down box with an edit field; `flags` without control_flag::scrolls, which it has.
constexpr Control drop_down(std::uint16_t id, int x, int y, int width, unsigned flags = 0) {
    constexpr int closed_height = 13;
    return {id, ControlKind::drop_down, "", {x, y, width, closed_height}, flags | control_flag::scrolls};
}

constexpr Control field_name_box(std::uint16_t id, int x, int y, int width,
                                 unsigned flags = control_flag::upper_case | control_flag::sorted) {
    return drop_down(id, x, y, width, flags);
}

constexpr Control edit(std::uint16_t id, const DialogRect& place, unsigned flags, int limit = 0) {
    return {id, ControlKind::edit, "", place, flags, limit};
}

constexpr Control check_box(std::uint16_t id, const char* text, const DialogRect& place) {
    return {id, ControlKind::check_box, text, place};
}

constexpr Control button(std::uint16_t id, const char* text, const DialogRect& place, unsigned flags = 0) {
    return {id, ControlKind::button, text, place, flags};
}

constexpr Control ok_button(int x, int y) {
    return button(ok_id, "OK", {x, y, 50, 14}, control_flag::default_button);
}

constexpr Control cancel_button(int x, int y) {
    return button(cancel_id, "Cancel", {x, y, 50, 14});
}

} // namespace quorvex
