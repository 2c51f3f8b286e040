#include "vantaro/windows/general_page.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace vantaro::core {

namespace {

constexpr std::uint64_t bytes_a_megabyte = 1'000'000;

int in_megabytes(std::uint64_t bytes, int most) {
    // Rounded up: a little room is not none.
    const std::uint64_t megabytes = bytes / bytes_a_megabyte + (bytes % bytes_a_megabyte != 0 ? 1 : 0);
    return static_cast<int>(std::min(megabytes, static_cast<std::uint64_t>(most)));
}

QSpinBox* make_number_box(int most, const char* unit, QWidget* parent) {
    auto* box = new QSpinBox(parent);
    box->setRange(0, most);
    box->setSuffix(unit);
    box->setGroupSeparatorShown(true);
    box->setAlignment(Qt::AlignRight);
    box->setAccelerated(true);
    return box;
}

} // namespace

GeneralPage::GeneralPage(TagIO& tag_io, const Preferences& preferences, std::string config_dir,
                         QWidget* parent)
    : QWidget(parent), tag_io_(tag_io), stored_(preferences), config_dir_(std::move(config_dir)),
      days_(make_number_box(36500, " days", this)), megabytes_(make_number_box(999'999'999, " MB", this)),
      keep_times_(new QCheckBox("&Keep the files' times of change when their tags are written", this)),
      id3v2_(new QComboBox(this)), separator_(new QLineEdit(this)) {
    for (const auto& [policy, text] :
         {std::pair{Id3v2Policy::as_needed, "Each tag's own; 2.4 where a field gets several values"},
          std::pair{Id3v2Policy::keep, "Each tag's own; in 2.3 several values are joined"},
          std::pair{Id3v2Policy::v23, "The same, and new tags are 2.3"},
          std::pair{Id3v2Policy::v24, "Edited and new tags are 2.4"}})
        id3v2_->addItem(text, static_cast<int>(policy));
    separator_->setMaxLength(16);
    auto* tags_note =
        new QLabel("The choice of the version holds from the next start of the program on.", this);
    tags_note->setWordWrap(true);
    auto* tags_form = new QFormLayout;
    tags_form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    tags_form->addRow("Version of &ID3v2:", id3v2_);
    tags_form->addRow("&Between joined values:", separator_);
    auto* note = new QLabel("Older runs are removed when the program starts. The newest run can always be "
                            "undone.",
                            this);
    note->setWordWrap(true);
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    form->addRow("Runs can be &undone for:", days_);
    form->addRow("&Room for undoing, at most:", megabytes_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(note);
    layout->addSpacing(fontMetrics().lineSpacing());
    layout->addWidget(keep_times_);
    layout->addSpacing(fontMetrics().lineSpacing());
    layout->addLayout(tags_form);
    layout->addWidget(tags_note);
    layout->addStretch();
    show(preferences);
}

void GeneralPage::show(const Preferences& preferences) {
    days_->setValue(static_cast<int>(std::clamp<std::int64_t>(preferences.undo.days, 0, days_->maximum())));
    megabytes_->setValue(in_megabytes(preferences.undo.bytes, megabytes_->maximum()));
    keep_times_->setChecked(preferences.keep_times);
    id3v2_->setCurrentIndex(id3v2_->findData(static_cast<int>(preferences.tags.id3v2)));
    separator_->setText(QString::fromStdString(preferences.tags.separator));
}

Preferences GeneralPage::shown() const {
    Preferences result = stored_;
    result.undo.days = days_->value();
    // What is no whole number of megabytes in the file stays what it is until it is changed here.
    if (megabytes_->value() != in_megabytes(stored_.undo.bytes, megabytes_->maximum()))
        result.undo.bytes = static_cast<std::uint64_t>(megabytes_->value()) * bytes_a_megabyte;
    result.keep_times = keep_times_->isChecked();
    result.tags.id3v2 = static_cast<Id3v2Policy>(id3v2_->currentData().toInt());
    if (const std::string separator = separator_->text().toStdString(); can_separate(separator))
        result.tags.separator = separator;
    return result;
}

void GeneralPage::apply() {
    const Preferences wanted = shown();
    if (wanted.undo.days == stored_.undo.days && wanted.undo.bytes == stored_.undo.bytes
        && wanted.keep_times == stored_.keep_times && wanted.tags == stored_.tags)
        return;
    save_preferences(config_dir_, wanted);
    stored_ = wanted;
    tag_io_.set_keeps_times(wanted.keep_times);
}

void GeneralPage::reset_all() {
    show({});
}

} // namespace vantaro::core
