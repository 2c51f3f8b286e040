// How tests get at windows and at what is in them.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <functional>
#include <string>

namespace vantaro::test {

/// As soon as events are handled, does something to the modal window that is open by then. Should the window
/// still be open when a few seconds have passed, it is closed.
inline void with_modal(const std::function<void(QWidget& window)>& act) {
    QTimer::singleShot(0, [act] {
        QWidget* window = QApplication::activeModalWidget();
        ASSERT_NE(window, nullptr);
        QTimer::singleShot(5000, window, [window] {
            ADD_FAILURE() << "still open: " << window->windowTitle().toStdString();
            delete window;
        });
        act(*window);
    });
}

/// The visible window of that title; nullptr when there is none.
inline QWidget* find_window(const QString& title) {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowTitle() == title)
            return window;
    return nullptr;
}

/// The button with that text, without its mnemonic. Throws where there is none.
inline QAbstractButton& button(const QWidget& window, const QString& text) {
    for (auto* found : window.findChildren<QAbstractButton*>())
        if (found->text().remove('&') == text)
            return *found;
    throw std::runtime_error("no button " + text.toStdString());
}

inline void press(const QWidget& window, const QString& text) {
    button(window, text).click();
}

template <class Widget>
Widget& child(const QWidget& window, qsizetype index = 0) {
    return *window.findChildren<Widget*>().at(index);
}

/// The lines of a tree that can be seen, those within others behind two more blanks, columns joined by " = ".
inline std::string tree_text(const QTreeWidgetItem& item, const std::string& indent = {}) {
    std::string text;
    for (int i = 0; i < item.childCount(); ++i) {
        const QTreeWidgetItem& line = *item.child(i);
        if (line.isHidden())
            continue;
        text += indent + line.text(0).toStdString();
        if (!line.text(1).isEmpty())
            text += " = " + line.text(1).toStdString();
        text += '\n' + tree_text(line, indent + "  ");
    }
    return text;
}
inline std::string tree_text(const QTreeWidget& tree) {
    return tree_text(*tree.invisibleRootItem());
}

inline QTreeWidgetItem* find_line(const QTreeWidget& tree, const QString& name) {
    return tree.findItems(name, Qt::MatchExactly | Qt::MatchRecursive).value(0);
}

} // namespace vantaro::test
