// The advanced preferences of all components, as a tree with a search box.
//
//     std::vector<Ref<AdvancedPreference>> services = ...;
//     auto* page = new AdvancedPage(services, tabs);
//     page->apply();
//
// Main thread.
#pragma once

#include "host/api/registered_services.h"

#include <QWidget>

#include <vector>

class QTreeWidget;
class QTreeWidgetItem;

namespace vantaro::core {

class AdvancedPage final : public QWidget {
public:
    AdvancedPage(const std::vector<Ref<AdvancedPreference>>& services, QWidget* parent);

    /// Hands what was typed to the components, resets what was to be reset, and shows what the values are
    /// then. Throws: std::runtime_error with a line for every entry whose text is no whole number where
    /// one is wanted, or that its component refused. Those stay as they were typed; the others are applied.
    void apply();
    /// Every entry is reset by the next apply().
    void reset_all();

private:
    void filter(const QString& text);
    void show_menu(const QPoint& at);

    QTreeWidget* tree_;
};

} // namespace vantaro::core
