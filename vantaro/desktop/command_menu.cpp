#include "vantaro/desktop/command_menu.h"

#include "vantaro/windows/shown_text.h"

#include <QAction>

#include <map>
#include <string>

namespace vantaro::core {

namespace {

/// A name that would widen the menu over the screen loses its middle.
QString short_name(const QMenu& menu, const std::string& name) {
    constexpr int most_characters = 50;
    const QFontMetrics metrics = menu.fontMetrics();
    QString text = QString::fromStdString(name);
    text.replace(u'\t', u' ').replace(u'\n', u' ');
    return metrics.elidedText(text, Qt::ElideMiddle, most_characters * metrics.averageCharWidth());
}

QString menu_text(const QMenu& menu, const std::string& name) {
    return short_name(menu, name).replace(u'&', QStringLiteral("&&"));
}

/// The description, which may name the command itself, and the name where the menu does not show all of it.
QString tip_of(const MenuCommand& command) {
    const QString name = QString::fromStdString(command.name);
    const QString description = QString::fromStdString(command.description);
    if (description.isEmpty() || description.contains(name))
        return description.isEmpty() ? name : description;
    return name + u'\n' + description;
}

/// The submenus of one menu that is being made, by their paths.
class Submenus {
public:
    explicit Submenus(QMenu& menu) { menus_[{}] = &menu; }

    QMenu& at(const std::vector<std::string>& names) {
        QMenu*& menu = menus_[names];
        if (!menu) {
            QMenu& parent = at({names.begin(), names.end() - 1});
            menu = parent.addMenu(menu_text(parent, names.back()));
            menu->menuAction()->setToolTip(shown_tip(QString::fromStdString(names.back())));
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
        QMenu& place = submenus.at(command.menus);
        QAction* action = place.addAction(menu_text(place, command.name));
        action->setToolTip(shown_tip(tip_of(command)));
        action->setStatusTip(QString::fromStdString(command.description).simplified());
        if (const QKeySequence keys = shortcuts.shortcut(command.guid); !keys.isEmpty()) {
            // Behind a tab the keys are text in the menu, and nothing that competes with the window's.
            action->setText(action->text() + u'\t' + keys.toString(QKeySequence::NativeText));
        }
        QObject::connect(action, &QAction::triggered, [command, on_chosen] { on_chosen(command); });
    }
}

} // namespace vantaro::core
