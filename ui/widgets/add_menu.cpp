#include "ui/widgets/add_menu.h"

#include "host/exception_filter.h"
#include "ui/widgets/mnemonics.h"

#include <QKeyEvent>
#include <QMenu>
#include <QScreen>

namespace quorvex {

namespace {

/// Whether a key on its way down presses the button.
bool is_press(const QEvent& event) {
    if (event.type() != QEvent::KeyPress)
        return event.type() == QEvent::Shortcut;
    const auto& key = static_cast<const QKeyEvent&>(event);
    return key.key() == Qt::Key_Space && !key.isAutoRepeat();
}

} // namespace

AddMenu::AddMenu(QPushButton& button, OnChosen on_chosen)
    : button_(button), on_chosen_(std::move(on_chosen)) {
    button.installEventFilter(this);
    connect(&button, &QPushButton::clicked, this, [this] { guarded([&] { show(); }); });
}

bool AddMenu::eventFilter(QObject* watched, QEvent* event) {
    // A button clicks when its key comes up, or a moment later. Some desktops allow a menu only as the answer
    // to a key that goes down.
    if (!is_press(*event))
        return QObject::eventFilter(watched, event);
    button_.click();
    return true;
}

void AddMenu::show() {
    auto* menu = new QMenu(&button_);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QSet<QChar> taken;
    for (const ActionMenuEntry& entry : action_menu()) {
        const QString name = QString::fromStdString(entry.name).replace('&', "&&");
        connect(menu->addAction(with_mnemonic(name, taken)), &QAction::triggered, this,
                [this, entry] { guarded([&] { on_chosen_(*entry.type, entry.name); }); });
    }
    // Beside the button: below it, or above where the screen ends.
    QPoint corner = button_.mapToGlobal(QPoint(0, button_.height()));
    if (corner.y() + menu->sizeHint().height() > button_.screen()->availableGeometry().bottom())
        corner = button_.mapToGlobal(QPoint(0, -menu->sizeHint().height()));
    menu->popup(corner);
}

} // namespace quorvex
