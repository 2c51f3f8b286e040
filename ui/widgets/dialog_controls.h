// The controls of a dialog template as widgets in a window.
//
//     DialogControls controls(dialog, window);
//     controls.place();
//     auto& box = controls.get<QComboBox>(1024);
//
// Widgets belong to the window, and have their ids as object names; tab order is the template's. A label
// names the next control, when that is a box or a list: a click on its underlined letter goes there, and so
// do assistive technologies. A check box may stand between. So does the title of a frame, without a letter.
// No letter is underlined twice. The dialog is drawn in the desktop's font and style; where these need more
// room than the template's own would, all units grow alike.
//
// Main thread.
#pragma once

#include "ui/dialog_template.h"
#include "ui/widgets/dialog_units.h"

#include <QWidget>

#include <vector>

namespace quorvex {

class DialogControls {
public:
    /// `dialog` outlives this.
    DialogControls(const DialogTemplate& dialog, QWidget& window);

    /// Computes dialog units from the window's font and style, and puts window and controls to the template's
    /// sizes.
    void place();
    const DialogUnits& units() const { return units_; }

    /// The widget of that id. Ends the process as a fatal internal error when there is none, or none of that
    /// class.
    QWidget& get(std::uint16_t id) const;
    template <class Widget>
    Widget& get(std::uint16_t id) const {
        auto* widget = dynamic_cast<Widget*>(&get(id));
        if (!widget)
            no_such_control();
        return *widget;
    }

private:
    struct Item {
        const Control* control;
        QWidget* widget;
    };

    [[noreturn]] static void no_such_control();
    void name_controls();

    const DialogTemplate& dialog_;
    QWidget& window_;
    std::vector<Item> items_;
    DialogUnits units_;
};

/// What assistive technologies call a control; a drop-down box with the field that has the focus in it.
void set_spoken_name(QWidget& control, const QString& name);

/// What a box of a dialog holds: UTF-8, line breaks of several lines as CR LF; of a check box "c" when it is
/// checked, else "n".
std::string control_text(const QWidget& control);
/// Puts a text in. A drop-down box keeps its list.
void set_control_text(QWidget& control, const std::string& text);

} // namespace quorvex
