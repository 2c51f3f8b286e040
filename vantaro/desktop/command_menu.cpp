#include "vantaro/desktop/command_menu.h"

#include <QAction>

#include <map>
#include <string>
#include <string_view>

namespace vantaro::core {

namespace {

QString menu_text(std::string_view name) {
    QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    return text.replace(u'&', QStringLiteral("&&")).replace(u'\t', u' ');
}

/// The submenus of one menu that is being made, by their paths.
class Submenus {
public:
    explicit Submenus(QMenu& menu) { menus_[{}] = &menu; }

    QMenu& at(std::string_view path) {
        QMenu*& menu = menus_[std::string(path)];
        if (!menu) {
            const std::size_t slash = path.rfind('/');
            const bool is_outermost = slash == path.npos;
            menu = at(is_outermost ? std::string_view() : path.substr(0, slash))
                       .addMenu(menu_text(is_outermost ? path : path.substr(slash + 1)));
            menu->setToolTipsVisible(true);
        }
        return *menu;
    }

private:
    std::map<std::string, QMenu*, std::less<>> menus_;
};

} // namespace

std::string command_name(const MenuCommand& command) {
    StringSink name;
    std::uint32_t flags = 0;
    command.node->get_display(name, flags);
    return name.take();
}

void fill_menu(QMenu& menu, const std::vector<MenuCommand>& commands, const ShortcutTable& shortcuts,
               const std::function<void(const MenuCommand& command)>& on_chosen) {
    Submenus submenus(menu);
    menu.setToolTipsVisible(true);
    for (const MenuCommand& command : commands) {
        const std::string name = command_name(command);
        const std::size_t above = command.path.size() - name.size();
        QMenu& place = submenus.at(std::string_view(command.path).substr(0, above == 0 ? 0 : above - 1));
        QAction* action = place.addAction(menu_text(name));
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
