#include "vantaro/desktop/command_menu.h"

#include <QAction>

#include <map>
#include <string>

namespace vantaro::core {

namespace {

QString menu_text(const std::string& name) {
    QString text = QString::fromStdString(name);
    return text.replace(u'&', QStringLiteral("&&")).replace(u'\t', u' ');
}

/// The submenus of one menu that is being made, by their paths.
class Submenus {
public:
    explicit Submenus(QMenu& menu) { menus_[{}] = &menu; }

    QMenu& at(const std::vector<std::string>& names) {
        QMenu*& menu = menus_[names];
        if (!menu) {
            menu = at({names.begin(), names.end() - 1}).addMenu(menu_text(names.back()));
            menu->setToolTipsVisible(true);
        }
        return *menu;
    }

private:
    std::map<std::vector<std::string>, QMenu*> menus_;
};

} // namespace

void fill_menu(QMenu& menu, const std::vector<MenuCommand>& commands, const ShortcutTable& shortcuts,
               const std::function<void(const MenuCommand& command)>& on_chosen) {
    Submenus submenus(menu);
    menu.setToolTipsVisible(true);
    for (const MenuCommand& command : commands) {
        QAction* action = submenus.at(command.menus).addAction(menu_text(command.name));
        action->setToolTip(QString::fromStdString(command.description));
        action->setStatusTip(action->toolTip());
        if (const QKeySequence keys = shortcuts.shortcut(command.guid); !keys.isEmpty()) {
            // Behind a tab the keys are text in the menu, and nothing that competes with the window's.
            action->setText(action->text() + u'\t' + keys.toString(QKeySequence::NativeText));
        }
        QObject::connect(action, &QAction::triggered, [command, on_chosen] { on_chosen(command); });
    }
}

} // namespace vantaro::core
