#include "vantaro/windows/preferences_window.h"

#include "vantaro/windows/advanced_page.h"
#include "vantaro/windows/general_page.h"
#include "vantaro/windows/shown_text.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace vantaro::core {

namespace {

class PreferencesWindow final : public QDialog {
public:
    PreferencesWindow(Host& host, const std::string& config_dir, QWidget* parent);

    /// OK. Stays open when something could not be stored.
    void accept() override;

private:
    /// Returns whether everything has taken effect; otherwise the person has been told.
    bool apply();

    GeneralPage* general_;
    AdvancedPage* advanced_;
};

std::vector<Ref<AdvancedPreference>> advanced_services(Host& host) {
    std::vector<Ref<AdvancedPreference>> services;
    host.for_each_service<AdvancedPreference>(
        [&](AdvancedPreference& service) { services.emplace_back(&service); });
    return services;
}

PreferencesWindow::PreferencesWindow(Host& host, const std::string& config_dir, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle("Preferences");
    auto* tabs = new QTabWidget(this);
    const Preferences preferences =
        load_preferences(config_dir, [&](const std::string& line) { host.report(line); });
    general_ = new GeneralPage(host.tag_io(), preferences, config_dir, tabs);
    advanced_ = new AdvancedPage(advanced_services(host), tabs);
    tabs->addTab(general_, "&General");
    tabs->addTab(advanced_, "Ad&vanced");

    auto* buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply, this);
    QPushButton* reset = buttons->addButton("Reset &page", QDialogButtonBox::ResetRole);
    for (QAbstractButton* button : buttons->buttons())
        static_cast<QPushButton*>(button)->setAutoDefault(false);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, [this] { apply(); });
    connect(reset, &QPushButton::clicked, this, [this, tabs] {
        if (tabs->currentWidget() == advanced_)
            advanced_->reset_all();
        else
            general_->reset_all();
    });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs, 1);
    layout->addWidget(buttons);
    resize(100 * fontMetrics().averageCharWidth(), 26 * fontMetrics().lineSpacing());
}

void PreferencesWindow::accept() {
    if (apply())
        QDialog::accept();
}

bool PreferencesWindow::apply() {
    try {
        general_->apply();
        advanced_->apply();
        return true;
    } catch (const std::exception& error) {
        auto* message = new QMessageBox(QMessageBox::Warning, windowTitle(), shown_text(error.what()),
                                        QMessageBox::Ok, this); // deletes itself
        message->setAttribute(Qt::WA_DeleteOnClose);
        message->setTextFormat(Qt::PlainText);
        message->open();
        return false;
    }
}

} // namespace

void show_preferences(Host& host, const std::string& config_dir, QWidget* parent) {
    // On the heap: a parent that is deleted meanwhile takes the window along.
    const QPointer<QDialog> window = new PreferencesWindow(host, config_dir, parent);
    window->exec();
    delete window;
}

} // namespace vantaro::core
