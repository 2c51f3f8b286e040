// The menu of a button, with the kinds of actions that can be added.
//
//     AddMenu menu(button, [&](ActionType& type, const std::string& name) { ... });
//
// Main thread.
#pragma once

#include "script/action_registry.h"

#include <QObject>
#include <QPushButton>

#include <functional>

namespace quorvex {

class AddMenu final : public QObject {
public:
    /// `on_chosen` gets the kind and its name in the menu.
    using OnChosen = std::function<void(ActionType& type, const std::string& name)>;

    /// `button` outlives the object.
    AddMenu(QPushButton& button, OnChosen on_chosen);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void show();

    QPushButton& button_;
    const OnChosen on_chosen_;
};

} // namespace quorvex
