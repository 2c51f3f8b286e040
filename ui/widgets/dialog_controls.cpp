#include "ui/widgets/dialog_controls.h"

#include "host/shared/failure.h"
#include "ui/widgets/drop_down_box.h"
#include "ui/widgets/input_limit.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/mnemonics.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSet>
#include <QTableView>

namespace quorvex {

namespace {

QWidget* make_label(const Control& control, QWidget* window) {
    auto* label = new QLabel(QString::fromUtf8(control.text), window);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    return label;
}

QWidget* make_edit(const Control& control, QWidget* window) {
    if (control.flags & control_flag::multi_line) {
        auto* edit = new QPlainTextEdit(window);
        edit->setTabChangesFocus(true);
        const bool scrolls = (control.flags & control_flag::scrolls) != 0;
        edit->setLineWrapMode(scrolls ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
        limit_input(*edit, control.limit);
        return edit;
    }
    return new LineEdit(control.flags, window);
}

QWidget* make_button(const Control& control, QWidget* window) {
    auto* button = new QPushButton(QString::fromUtf8(control.text), window);
    const bool is_default = (control.flags & control_flag::default_button) != 0;
    button->setAutoDefault(true);
    button->setDefault(is_default);
    return button;
}

/// Rows of one height, and no search by typing: what rows show is computed one by one.
class RowTable final : public QTableView {
public:
    explicit RowTable(QWidget* parent) : QTableView(parent) {
        setSelectionBehavior(QAbstractItemView::SelectRows);
        setSelectionMode(QAbstractItemView::SingleSelection);
        setEditTriggers(QAbstractItemView::NoEditTriggers);
        setTabKeyNavigation(false);
        setWordWrap(false);
        setCornerButtonEnabled(false);
        verticalHeader()->hide();
        verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        verticalHeader()->setDefaultSectionSize(fontMetrics().height() * 3 / 2);
        horizontalHeader()->setSectionsClickable(false);
        horizontalHeader()->setHighlightSections(false);
        horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    }
    void keyboardSearch(const QString&) override {}
};

QWidget* make_widget(const Control& control, QWidget* window) {
    switch (control.kind) {
    case ControlKind::label:
        return make_label(control, window);
    case ControlKind::edit:
        return make_edit(control, window);
    case ControlKind::drop_down:
        return new DropDownBox(control.flags, window);
    case ControlKind::check_box:
        return new QCheckBox(QString::fromUtf8(control.text), window);
    case ControlKind::button:
        return make_button(control, window);
    case ControlKind::group:
        return new QGroupBox(QString::fromUtf8(control.text), window);
    case ControlKind::list:
        return new QListWidget(window);
    case ControlKind::table:
        return new RowTable(window);
    }
    uBugCheck("a dialog template has a control of no kind");
}

bool has_own_text(ControlKind kind) {
    return kind == ControlKind::label || kind == ControlKind::button || kind == ControlKind::group;
}

/// The text of a label as the name of its control.
QString spoken(const char* text) {
    QString name = QString::fromUtf8(text).remove('&');
    if (name.endsWith(':'))
        name.chop(1);
    return name;
}

/// What a control needs to show all of itself, in pixels.
QSize needed_size(const Control& control, const QWidget& widget) {
    const QSize hint = widget.sizeHint();
    switch (control.kind) {
    case ControlKind::edit:
    case ControlKind::drop_down:
        return {0, (control.flags & control_flag::multi_line) ? 0 : hint.height()};
    case ControlKind::button: {
        // Styles like buttons wider than their texts; templates know how wide they want them.
        const QString text = dynamic_cast<const QPushButton&>(widget).text().remove('&');
        const QFontMetrics metrics = widget.fontMetrics();
        return {metrics.horizontalAdvance(text) + metrics.height() / 2, hint.height()};
    }
    case ControlKind::label:
    case ControlKind::check_box:
        return hint;
    case ControlKind::group:
    case ControlKind::list:
    case ControlKind::table:
        return {};
    }
    return hint;
}

} // namespace

DialogControls::DialogControls(const DialogTemplate& dialog, QWidget& window)
    : dialog_(dialog), window_(window), units_(window.font()) {
    for (const Control& control : dialog.controls) {
        QWidget* widget = make_widget(control, &window);
        if (control.id != Control::no_id)
            widget->setObjectName(QString::number(control.id));
        items_.push_back({&control, widget});
    }
    name_controls();
}

void DialogControls::name_controls() {
    std::vector<QLabel*> labels;
    std::vector<QCheckBox*> boxes;
    QSet<QChar> taken;
    const Item* name = nullptr;
    for (const Item& item : items_) {
        const QString text = QString::fromUtf8(item.control->text);
        if (auto* box = dynamic_cast<QCheckBox*>(item.widget)) {
            boxes.push_back(box); // may stand between a label and what it names
            continue;
        }
        if (const QChar letter = mnemonic_of(text); !letter.isNull())
            taken.insert(letter);
        if (has_own_text(item.control->kind)) {
            name = text.isEmpty() || item.control->kind == ControlKind::button ? nullptr : &item;
            continue;
        }
        if (name)
            set_spoken_name(*item.widget, spoken(name->control->text));
        if (auto* label = name ? dynamic_cast<QLabel*>(name->widget) : nullptr) {
            label->setBuddy(item.widget);
            labels.push_back(label);
        }
        name = nullptr;
    }
    add_mnemonics(labels, boxes, taken);
    // A box without a label is what the dialog is about.
    for (const auto& [control, widget] : items_)
        if ((control->kind == ControlKind::edit || control->kind == ControlKind::drop_down)
            && widget->accessibleName().isEmpty())
            set_spoken_name(*widget, QString::fromUtf8(dialog_.title));
}

void DialogControls::place() {
    units_ = DialogUnits(window_.font());
    for (const auto& [control, widget] : items_)
        units_.make_room(needed_size(*control, *widget), control->place.width, control->place.height);
    // First, since it may move controls.
    window_.resize(units_.pixels(dialog_.width, dialog_.height));
    for (const auto& [control, widget] : items_)
        widget->setGeometry(units_.pixels(control->place));
}

QWidget& DialogControls::get(std::uint16_t id) const {
    for (const auto& [control, widget] : items_)
        if (control->id == id)
            return *widget;
    no_such_control();
}

void DialogControls::no_such_control() {
    uBugCheck("a dialog template lacks a control that is asked for");
}

void set_spoken_name(QWidget& control, const QString& name) {
    control.setAccessibleName(name);
    if (const auto* box = dynamic_cast<const DropDownBox*>(&control))
        box->lineEdit()->setAccessibleName(name);
}

std::string control_text(const QWidget& control) {
    if (const auto* box = dynamic_cast<const QCheckBox*>(&control))
        return box->isChecked() ? "c" : "n";
    if (const auto* box = dynamic_cast<const DropDownBox*>(&control))
        return box->currentText().toStdString();
    if (const auto* edit = dynamic_cast<const QLineEdit*>(&control))
        return edit->text().toStdString();
    if (const auto* edit = dynamic_cast<const QPlainTextEdit*>(&control))
        return edit->document()
            ->toRawText() // blanks of every kind as they are
            .remove(QChar(u'\0'))
            .replace(QChar(QChar::ParagraphSeparator), QStringLiteral("\r\n"))
            .toStdString();
    uBugCheck("a control that holds no setting is asked for one");
}

void set_control_text(QWidget& control, const std::string& text) {
    const QString shown = QString::fromStdString(text);
    if (auto* box = dynamic_cast<QCheckBox*>(&control))
        box->setChecked(text == "c");
    else if (auto* drop_down = dynamic_cast<DropDownBox*>(&control))
        drop_down->setEditText(shown);
    else if (auto* edit = dynamic_cast<QLineEdit*>(&control))
        edit->setText(shown);
    else if (auto* lines = dynamic_cast<QPlainTextEdit*>(&control))
        lines->setPlainText(shown);
    else
        uBugCheck("a control that holds no setting is given one");
}

} // namespace quorvex
