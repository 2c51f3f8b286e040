// The host's own preferences.
//
//     auto* page = new GeneralPage(host.tag_io(), load_preferences(config_dir, report), config_dir, tabs);
//     page->apply();
//
// Main thread.
#pragma once

#include "vantaro/application/preferences.h"
#include "vantaro/update/tag_io.h"

#include <QWidget>

#include <string>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;

namespace vantaro::core {

class GeneralPage final : public QWidget {
public:
    /// `tag_io` outlives the page.
    GeneralPage(TagIO& tag_io, const Preferences& preferences, std::string config_dir, QWidget* parent);

    /// Stores what has changed, and puts it into effect.
    /// Throws: vantaro_io::exception_io when it cannot be stored; it has no effect then.
    void apply();
    /// Shows the defaults.
    void reset_all();

private:
    void show(const Preferences& preferences);
    Preferences shown() const;

    TagIO& tag_io_;
    Preferences stored_;
    const std::string config_dir_;
    QSpinBox* days_;
    QSpinBox* megabytes_;
    QCheckBox* keep_times_;
    QComboBox* id3v2_;
    QLineEdit* separator_;
};

} // namespace vantaro::core
