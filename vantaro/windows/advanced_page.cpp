#include "vantaro/windows/advanced_page.h"

#include "vantaro/windows/advanced_tree.h"
#include "vantaro/windows/shown_text.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>

namespace vantaro::core {

namespace {

enum Column { name_column, value_column };

/// Why the text is no value of an entry that takes whole numbers; empty when it is one.
QString find_mistake(const QString& text) {
    bool is_number = false;
    text.toULongLong(&is_number);
    const bool has_only_digits =
        std::ranges::all_of(text, [](QChar c) { return c >= QChar(u'0') && c <= QChar(u'9'); });
    if (is_number && has_only_digits)
        return {};
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    return QString("\"%1\" is no whole number from 0 to %2").arg(text).arg(most);
}

/// A line of the tree: a branch, or an entry with what is to become of its value.
class Line final : public QTreeWidgetItem {
public:
    explicit Line(const AdvancedNode& node) : node_(node) {
        setText(name_column, shown_text(node.name));
        if (node.text)
            setFlags(flags() | Qt::ItemIsEditable);
        show();
    }

    bool is_entry() const { return static_cast<bool>(node_.text); }
    const std::string& name() const { return node_.name; }

    /// What editing starts with.
    QString editable_text() const { return typed_ ? *typed_ : current(); }
    void type(const QString& typed) {
        const QString text = node_.is_integer ? typed.trimmed() : typed;
        typed_ = text == current() ? std::nullopt : std::optional(text);
        is_reset_ = false;
        show();
    }
    void reset() {
        typed_.reset();
        is_reset_ = true;
        show();
    }
    /// Throws: what the component throws, std::runtime_error for what is no value; nothing is forgotten then.
    void apply() {
        if (const QString mistake = current_mistake(); !mistake.isEmpty())
            throw std::runtime_error(mistake.toStdString());
        if (is_reset_)
            node_.text->reset();
        else if (typed_) {
            const std::string text = typed_->toStdString();
            node_.text->set_value(text.data(), text.size());
        }
        is_reset_ = false;
        typed_.reset();
    }
    void show() {
        if (!is_entry())
            return;
        setText(value_column, is_reset_ ? QString("(default)") : editable_text());
        QFont font;
        font.setBold(typed_.has_value());
        font.setItalic(is_reset_);
        setData(value_column, Qt::FontRole, font);
        const QString mistake = current_mistake();
        setData(value_column, Qt::ForegroundRole, mistake.isEmpty() ? QVariant() : QColor(Qt::red));
        setToolTip(value_column, mistake);
    }

private:
    QString current_mistake() const { return node_.is_integer && typed_ ? find_mistake(*typed_) : QString(); }
    QString current() const {
        return QString::fromStdString(text_of([&](TextSink& out) { node_.text->get_value(out); }));
    }

    const AdvancedNode node_;
    std::optional<QString> typed_;
    bool is_reset_ = false;
};

/// Everything in the tree is a Line.
Line& line_of(QTreeWidgetItem& item) {
    return static_cast<Line&>(item);
}

class ValueEditing final : public QStyledItemDelegate {
public:
    explicit ValueEditing(QTreeWidget& tree) : QStyledItemDelegate(&tree), tree_(tree) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex& index) const override {
        auto* editor = new QLineEdit(parent);
        editor->setAccessibleName(shown_text(line(index).name()));
        editor->setFrame(false);
        editor->setAutoFillBackground(true);
        return editor;
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override {
        static_cast<QLineEdit*>(editor)->setText(line(index).editable_text());
    }
    void setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex& index) const override {
        const auto* edit = static_cast<QLineEdit*>(editor);
        // Without a change, what was to be reset stays so.
        if (edit->isModified())
            line(index).type(edit->text());
    }

private:
    Line& line(const QModelIndex& index) const { return line_of(*tree_.itemFromIndex(index)); }

    QTreeWidget& tree_;
};

/// Editing is about the value, wherever in the line it is started.
class PreferenceTree final : public QTreeWidget {
public:
    using QTreeWidget::QTreeWidget;

protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override {
        return QTreeWidget::edit(index.siblingAtColumn(value_column), trigger, event);
    }
};

template <class Visit>
void for_each_line(QTreeWidgetItem& item, const Visit& visit) {
    for (int i = 0; i < item.childCount(); ++i) {
        visit(line_of(*item.child(i)));
        for_each_line(*item.child(i), visit);
    }
}

void add_lines(QTreeWidgetItem& parent, const AdvancedNode& node) {
    auto* line = new Line(node);
    parent.addChild(line);
    for (const AdvancedNode& child : node.children)
        add_lines(*line, child);
}

/// A branch that fits shows all that is in it. Returns whether something is left to be seen.
bool filter_line(QTreeWidgetItem& item, const QString& text, bool is_in_fitting_branch) {
    const bool fits = is_in_fitting_branch || item.text(name_column).contains(text, Qt::CaseInsensitive)
                      || item.text(value_column).contains(text, Qt::CaseInsensitive);
    bool is_seen = fits;
    for (int i = 0; i < item.childCount(); ++i)
        is_seen |= filter_line(*item.child(i), text, fits);
    item.setHidden(!is_seen);
    return is_seen;
}

} // namespace

AdvancedPage::AdvancedPage(const std::vector<Ref<AdvancedPreference>>& services, QWidget* parent)
    : QWidget(parent), tree_(new PreferenceTree(this)) {
    auto* search = new QLineEdit(this);
    search->setPlaceholderText("Search");
    search->setAccessibleName("Search");
    search->setClearButtonEnabled(true);
    connect(search, &QLineEdit::textChanged, this, [this](const QString& text) { filter(text); });

    setTabOrder(search, tree_);

    tree_->setAccessibleName("Settings");
    tree_->setColumnCount(2);
    tree_->setHeaderLabels({"Setting", "Value"});
    tree_->setUniformRowHeights(true);
    tree_->setItemDelegate(new ValueEditing(*tree_));
    tree_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    tree_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(tree_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) { show_menu(at); });
    connect(tree_, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item, int column) {
        if (column == value_column)
            tree_->editItem(item, column);
    });
    add_lines(*tree_->invisibleRootItem(), advanced_tree(services));
    tree_->expandAll();
    tree_->header()->setStretchLastSection(false);
    tree_->header()->setSectionResizeMode(name_column, QHeaderView::Stretch);
    tree_->header()->setSectionResizeMode(value_column, QHeaderView::Interactive);
    tree_->header()->resizeSection(value_column, 16 * fontMetrics().averageCharWidth());
    tree_->setCurrentItem(tree_->topLevelItem(0));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(search);
    layout->addWidget(tree_, 1);
}

void AdvancedPage::filter(const QString& text) {
    for (int i = 0; i < tree_->topLevelItemCount(); ++i)
        filter_line(*tree_->topLevelItem(i), text, false);
    tree_->expandAll();
}

void AdvancedPage::show_menu(const QPoint& at) {
    QTreeWidgetItem* item = tree_->itemAt(at);
    if (!item || !line_of(*item).is_entry())
        return;
    // Belongs to the page, and goes with it.
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction("&Edit"), &QAction::triggered, this,
            [this, item] { tree_->editItem(item, value_column); });
    connect(menu->addAction("&Reset"), &QAction::triggered, this, [item] { line_of(*item).reset(); });
    menu->popup(tree_->viewport()->mapToGlobal(at));
}

void AdvancedPage::apply() {
    // Takes what is still being typed.
    tree_->setFocus();
    std::string problems;
    QTreeWidgetItem& root = *tree_->invisibleRootItem();
    for_each_line(root, [&](Line& line) {
        try {
            line.apply();
        } catch (const std::exception& error) {
            problems += (problems.empty() ? "" : "\n") + line.name() + ": " + error.what();
        }
    });
    // A component may change one value on account of another.
    for_each_line(root, [](Line& line) { line.show(); });
    if (!problems.empty())
        throw std::runtime_error(problems);
}

void AdvancedPage::reset_all() {
    tree_->setFocus();
    for_each_line(*tree_->invisibleRootItem(), [](Line& line) {
        if (line.is_entry())
            line.reset();
    });
}

} // namespace vantaro::core
