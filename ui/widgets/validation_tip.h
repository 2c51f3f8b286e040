// ValidationTip: tells what is wrong with the input of a control, in a balloon at it.
//
//     tip.show("Please enter a valid field name.", box);
//
// One message at a time: it stays until the next one, or until the window goes.
//
// Main thread.
#pragma once

#include "ui/widgets/balloon.h"

#include <memory>
#include <string_view>

namespace quorvex {

class ValidationTip {
public:
    /// `window` outlives the tip.
    explicit ValidationTip(QWidget& window) : window_(window) {}

    /// A message with a line feed is no wider than the control. Does nothing once closed.
    void show(std::string_view message, QWidget& control);
    /// The window is closing: takes the message away for good.
    void close();

    /// What is being shown; nullptr for nothing.
    const Balloon* balloon() const { return balloon_.get(); }

private:
    QWidget& window_;
    std::unique_ptr<Balloon> balloon_;
    bool is_closed_ = false;
};

} // namespace quorvex
