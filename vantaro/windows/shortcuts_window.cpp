#include "vantaro/windows/shortcuts_window.h"

#include "vantaro/windows/shown_text.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace vantaro::core {

namespace {

enum Column { command_column, keys_column };
/// Where an item keeps the position of its command in the list.
constexpr int index_role = Qt::UserRole;

class ShortcutsWindow final : public QDialog {
public:
    ShortcutsWindow(const ShortcutTable& table, const std::vector<MenuCommand>& commands,
                    const std::vector<WindowKeys>& own, QWidget* parent);

    const ShortcutTable& table() const { return table_; }

    /// OK. Keys that were typed and not yet assigned count, unless another command would lose its own: that
    /// is for the person to say.
    void accept() override;

private:
    void fill();
    void filter(const QString& text);
    void show_current();
    void show_conflicts();
    void assign(const QKeySequence& keys);
    /// The other commands whose keys the keys would get in the way of.
    std::vector<Guid> conflicts(const QKeySequence& keys) const;
    /// What the keys belong to by now, in words; empty when they are free.
    QString owners(const QKeySequence& keys) const;
    QString name_of(const Guid& command) const;
    /// nullptr when none is chosen.
    const MenuCommand* current() const;

    ShortcutTable table_;
    const std::vector<MenuCommand>& commands_;
    const std::vector<WindowKeys>& own_;
    // In the order in which Tab goes through them.
    QLineEdit* search_;
    QTreeWidget* list_;
    QKeySequenceEdit* keys_;
    QPushButton* assign_;
    QPushButton* clear_;
    QLabel* conflict_;
};

ShortcutsWindow::ShortcutsWindow(const ShortcutTable& table, const std::vector<MenuCommand>& commands,
                                 const std::vector<WindowKeys>& own, QWidget* parent)
    : QDialog(parent), table_(table), commands_(commands), own_(own), search_(new QLineEdit(this)),
      list_(new QTreeWidget(this)), keys_(new QKeySequenceEdit(this)),
      assign_(new QPushButton("&Assign", this)), clear_(new QPushButton("C&lear", this)),
      conflict_(new QLabel(this)) {
    setWindowTitle("Keyboard Shortcuts");

    search_->setPlaceholderText("Search commands and keys");
    search_->setAccessibleName(search_->placeholderText());
    search_->setClearButtonEnabled(true);
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) { filter(text); });

    list_->setAccessibleName("Commands");
    list_->setColumnCount(2);
    list_->setHeaderLabels({"Command", "Keys"});
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setAlternatingRowColors(true);
    list_->header()->setStretchLastSection(false);
    list_->header()->setSectionResizeMode(command_column, QHeaderView::Stretch);
    list_->header()->setSectionResizeMode(keys_column, QHeaderView::ResizeToContents);
    connect(list_, &QTreeWidget::currentItemChanged, this, [this] { show_current(); });

    auto* keys_label = new QLabel("&Keys:", this);
    keys_label->setBuddy(keys_);
    for (QPushButton* button : {assign_, clear_})
        button->setAutoDefault(false);
    connect(keys_, &QKeySequenceEdit::keySequenceChanged, this, [this] { show_conflicts(); });
    connect(assign_, &QPushButton::clicked, this, [this] { assign(keys_->keySequence()); });
    connect(clear_, &QPushButton::clicked, this, [this] { assign({}); });
    conflict_->setWordWrap(true);
    conflict_->setTextFormat(Qt::PlainText);
    // Room for two lines, so that nothing moves under the pointer when it says something.
    conflict_->setMinimumHeight(2 * fontMetrics().lineSpacing());
    conflict_->setAlignment(Qt::AlignTop | Qt::AlignLeft);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* row = new QHBoxLayout;
    row->addWidget(keys_label);
    row->addWidget(keys_, 1);
    row->addWidget(assign_);
    row->addWidget(clear_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(search_);
    layout->addWidget(list_, 1);
    layout->addLayout(row);
    layout->addWidget(conflict_);
    layout->addWidget(buttons);
    const int character = fontMetrics().averageCharWidth();
    resize(90 * character, 28 * fontMetrics().lineSpacing());

    fill();
    list_->setCurrentItem(list_->topLevelItem(0));
    show_current();
}

void ShortcutsWindow::fill() {
    for (std::size_t i = 0; i < commands_.size(); ++i) {
        const MenuCommand& command = commands_[i];
        if (command.guid == Guid())
            continue; // nothing that keys could be kept by
        auto* item = new QTreeWidgetItem(list_);
        item->setText(command_column, shown_text(path_of(command)));
        item->setToolTip(command_column, shown_text(command.description));
        item->setText(keys_column, table_.shortcut(command.guid).toString(QKeySequence::NativeText));
        item->setData(command_column, index_role, static_cast<qulonglong>(i));
    }
}

void ShortcutsWindow::filter(const QString& text) {
    for (int i = 0; i < list_->topLevelItemCount(); ++i) {
        QTreeWidgetItem& item = *list_->topLevelItem(i);
        item.setHidden(!item.text(command_column).contains(text, Qt::CaseInsensitive)
                       && !item.text(keys_column).contains(text, Qt::CaseInsensitive));
    }
    // What is assigned goes to a command that can be seen.
    if (list_->currentItem() && list_->currentItem()->isHidden())
        list_->setCurrentItem(nullptr);
}

const MenuCommand* ShortcutsWindow::current() const {
    const QTreeWidgetItem* item = list_->currentItem();
    return item ? &commands_[item->data(command_column, index_role).toULongLong()] : nullptr;
}

void ShortcutsWindow::show_current() {
    const MenuCommand* command = current();
    keys_->setKeySequence(command ? table_.shortcut(command->guid) : QKeySequence());
    keys_->setEnabled(command != nullptr);
    show_conflicts();
}

std::vector<Guid> ShortcutsWindow::conflicts(const QKeySequence& keys) const {
    std::vector<Guid> found;
    const MenuCommand* command = current();
    if (keys.isEmpty() || !command)
        return found;
    // A sequence that another one begins with would never let the longer one be typed.
    for (const auto& [other, taken] : table_.all())
        if (other != command->guid && are_in_conflict(keys, taken))
            found.push_back(other);
    return found;
}

QString ShortcutsWindow::name_of(const Guid& command) const {
    const auto found = std::ranges::find(commands_, command, &MenuCommand::guid);
    return found == commands_.end() ? QString("a command that is not there at the moment")
                                    : '"' + shown_text(path_of(*found)) + '"';
}

QString ShortcutsWindow::owners(const QKeySequence& keys) const {
    QStringList names;
    const auto add = [&](const QKeySequence& taken, const QString& name) {
        names.push_back(taken.toString(QKeySequence::NativeText) + " belongs to " + name);
    };
    for (const Guid& other : conflicts(keys))
        add(table_.shortcut(other), name_of(other));
    for (const WindowKeys& own : own_)
        if (!keys.isEmpty() && are_in_conflict(keys, own.keys))
            add(own.keys, '"' + own.name + "\" of the window");
    return names.join("; ");
}

void ShortcutsWindow::show_conflicts() {
    const MenuCommand* command = current();
    const QKeySequence keys = keys_->keySequence();
    const bool are_its_own = command && keys == table_.shortcut(command->guid);
    const QString others = are_its_own ? QString() : owners(keys);
    conflict_->setText(others);
    assign_->setText(others.isEmpty() ? "&Assign" : "T&ake over");
    assign_->setEnabled(command && !keys.isEmpty() && !are_its_own);
    clear_->setEnabled(command && !table_.shortcut(command->guid).isEmpty());
}

void ShortcutsWindow::assign(const QKeySequence& keys) {
    const MenuCommand* command = current();
    if (!command)
        return;
    for (const Guid& other : conflicts(keys))
        table_.set(other, {});
    table_.set(command->guid, keys);
    for (int i = 0; i < list_->topLevelItemCount(); ++i) {
        QTreeWidgetItem& item = *list_->topLevelItem(i);
        const MenuCommand& shown = commands_[item.data(command_column, index_role).toULongLong()];
        item.setText(keys_column, table_.shortcut(shown.guid).toString(QKeySequence::NativeText));
    }
    show_current();
}

void ShortcutsWindow::accept() {
    if (assign_->isEnabled() && !owners(keys_->keySequence()).isEmpty())
        return assign_->setFocus();
    if (assign_->isEnabled())
        assign(keys_->keySequence());
    QDialog::accept();
}

} // namespace

bool edit_shortcuts(ShortcutTable& table, const std::vector<MenuCommand>& commands,
                    const std::vector<WindowKeys>& own, QWidget* parent) {
    // On the heap: a parent that is deleted meanwhile takes the window along.
    const QPointer<ShortcutsWindow> window = new ShortcutsWindow(table, commands, own, parent);
    const bool is_accepted = window->exec() == QDialog::Accepted && window;
    if (is_accepted)
        table = window->table();
    delete window;
    return is_accepted;
}

} // namespace vantaro::core
