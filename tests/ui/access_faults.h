// What keeps people from a window who use it by keyboard, or by ear.
//
//     EXPECT_EQ(access_faults(window), "");
#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QTabBar>
#include <QTabWidget>

#include <string>

namespace quorvex::test {

/// Collects letters behind "&", and tells which of them stand twice.
class Letters {
public:
    /// A text without a letter may count as if its first one was marked.
    void add(const QString& text, bool marks_first = false) {
        const QString shown = QString(text).remove("&&");
        const qsizetype mark = shown.indexOf('&');
        if (mark < 0 && (!marks_first || shown.isEmpty()))
            return;
        const QChar letter = shown.at(mark + 1).toLower();
        QString& owner = owners_[letter];
        if (!owner.isEmpty())
            faults_ += (owner + " and " + shown + " share " + letter + "; ").toStdString();
        owner = shown;
    }
    const std::string& faults() const { return faults_; }

private:
    QMap<QChar, QString> owners_;
    std::string faults_;
};

inline QString spoken_name(QWidget& widget) {
    // A box with an edit field is called by what stands in it; the field has the name, and the focus.
    if (const auto* box = dynamic_cast<const QComboBox*>(&widget); box && box->lineEdit())
        return spoken_name(*box->lineEdit());
    const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&widget);
    return accessible ? accessible->text(QAccessible::Name) : QString();
}

/// Controls that can have the focus, or tell of progress, and have no name or the name of another; letters
/// that lead to two. Of a window with tabs, what can be seen.
inline std::string access_faults(QWidget& window) {
    std::string faults;
    Letters letters;
    QMap<QString, QWidget*> names;
    QList<QWidget*> widgets = window.findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        const auto* label = dynamic_cast<QLabel*>(widget);
        const auto* bar = dynamic_cast<QProgressBar*>(widget);
        if (widget->window() != &window || (!bar && !widget->isVisibleTo(&window)))
            continue;
        const std::string who =
            std::string(widget->metaObject()->className()) + " " + widget->objectName().toStdString() + " ";
        // A part of a box that has the focus in its place has none.
        const bool can_have_focus = widget->focusPolicy() != Qt::NoFocus && !widget->focusProxy();
        if (can_have_focus || bar) {
            const QString name = spoken_name(*widget);
            if (name.trimmed().isEmpty())
                faults += who + "has no name; ";
            else if (names.contains(name))
                faults += who + "is called " + name.toStdString() + ", as another is; ";
            names[name] = widget;
        }
        if (label && label->buddy()) {
            letters.add(label->text());
            QString text = QString(label->text()).remove('&');
            if (text.endsWith(':'))
                text.chop(1);
            QString name = spoken_name(*label->buddy());
            if (name.endsWith(':'))
                name.chop(1);
            // Qt calls a box by what is chosen here, and tells its label as a relation.
            if (name != text && qobject_cast<QComboBox*>(label->buddy()) == nullptr)
                faults += "the label " + text.toStdString() + " is that of " + name.toStdString() + "; ";
        } else if (const auto* button = dynamic_cast<QAbstractButton*>(widget)) {
            // Some desktops give these letters of their own.
            const bool is_standard = dynamic_cast<QDialogButtonBox*>(button->parentWidget()) != nullptr;
            letters.add(button->text(), is_standard);
            const QString text = QString(button->text()).remove('&');
            if (!text.isEmpty() && spoken_name(*widget) != text)
                faults += text.toStdString() + " is called " + spoken_name(*widget).toStdString() + "; ";
        } else if (const auto* group = dynamic_cast<QGroupBox*>(widget)) {
            letters.add(group->title());
        } else if (const auto* tabs = dynamic_cast<QTabBar*>(widget)) {
            for (int i = 0; i < tabs->count(); ++i)
                letters.add(tabs->tabText(i));
        } else if (const auto* menus = dynamic_cast<QMenuBar*>(widget)) {
            for (const QAction* action : menus->actions())
                letters.add(action->text());
        }
    }
    return faults + letters.faults();
}

/// Letters that stand twice in the menu, or in one of those in it.
inline std::string access_faults(const QMenu& menu) {
    std::string faults;
    Letters letters;
    for (const QAction* action : menu.actions()) {
        letters.add(action->text().section('\t', 0, 0));
        if (action->menu())
            faults += access_faults(*action->menu());
    }
    return faults + letters.faults();
}

} // namespace quorvex::test
