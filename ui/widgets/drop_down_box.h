// DropDownBox: a drop-down box with an edit field, and what a DropDownHistory does with one.
//
//     attach(box, formatting_pattern_history, "%artist%");
//     if (show_menu(box, formatting_pattern_history, where)) ...
//
// Main thread.
#pragma once

#include "ui/history.h"
#include "ui/widgets/completion.h"

#include <QComboBox>

#include <memory>
#include <optional>

namespace quorvex {

class DropDownBox final : public QComboBox {
public:
    /// `flags` are control_flag bits.
    DropDownBox(unsigned flags, QWidget* parent);

    /// From now on the context menu is the history's; it outlives the box.
    void set_history(const DropDownHistory& history) { history_ = &history; }
    /// Replaces the list; the text in the edit field stays. A sorted box orders it.
    void set_entries(const std::vector<std::string>& entries);

    /// Completes what is typed from these entries, from now on.
    void complete_from(const QStringList& entries);

    /// The list starts at the entry that equals the box's text.
    void showPopup() override;

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    /// The wheel is for the box that has the focus.
    void wheelEvent(QWheelEvent* event) override;

private:
    /// The entry that equals the box's text; below 0 when there is none.
    int find_text() const { return findText(currentText(), Qt::MatchExactly | Qt::MatchCaseSensitive); }
    /// Makes the entry that equals the text the one that the keyboard and the wheel go on from.
    void go_to_text();

    const unsigned flags_;
    const DropDownHistory* history_ = nullptr;
    std::unique_ptr<Completion> completion_;
    /// The last key took something away: nothing is to be put in its place.
    bool takes_away_ = false;
    bool is_completing_ = false;
};

/// Adds the initial text to the history, lists the entries in the box, and shows the text.
void attach(DropDownBox& box, const DropDownHistory& history, const std::string& initial);
/// The same with the history of field names, and completion while typing: the names that begin with what
/// stands in the box drop down, and the first of them is appended. They are those of now: later additions
/// show when a box is attached again.
void attach_with_completion(DropDownBox& box, const std::string& initial);

/// The box's context menu, at a point of the screen, or in the middle of the box: to wipe the history, and to
/// remove the entry that equals the box's text. Waits for the choice. Returns whether the history was wiped
/// or an entry removed. The box may be deleted meanwhile.
bool show_menu(DropDownBox& box, const DropDownHistory& history, std::optional<QPoint> where);

} // namespace quorvex
