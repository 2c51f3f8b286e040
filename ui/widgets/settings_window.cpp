#include "ui/widgets/settings_window.h"

#include "host/api/exceptions.h"
#include "host/exception_filter.h"
#include "host/shared/failure.h"
#include "ui/widgets/anchor_resizer.h"
#include "ui/widgets/dialog_controls.h"
#include "ui/widgets/dialog_services.h"
#include "ui/widgets/drop_down_box.h"
#include "ui/widgets/pattern_tip.h"
#include "ui/widgets/validation_tip.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include <cerrno>
#include <utility>

namespace quorvex {

using namespace vantaro;

namespace {

class SettingsWindow final : public QDialog {
public:
    SettingsWindow(const SettingsRequest& request, QWidget* parent, CompletionNotify& done);
    ~SettingsWindow() override;

    /// OK.
    void accept() override;
    /// Cancel, Escape, the close box.
    void reject() override;

protected:
    void changeEvent(QEvent* event) override;
    /// Of the owner.
    bool eventFilter(QObject* owner, QEvent* event) override;

private:
    void fill(const SettingControl& bound);
    void watch_changes(const SettingControl& bound);
    void arrange();
    std::vector<std::string> texts() const;
    void refuse(const SettingControl& rejected);
    /// Reports, unless that has been done, and goes.
    void finish(std::uint32_t code);

    const Ref<Action> action_;
    const Ref<CompletionNotify> done_;
    const SettingsRequest request_;
    DialogServices services_;
    DialogControls controls_;
    AnchorResizer* resizer_ = nullptr; // belongs to the window
    bool is_arranged_ = false;
    ValidationTip tip_{*this};
    PatternTip pattern_tip_;
    bool is_completed_ = false;
    /// The settings as they were, and by control of the description, what it showed of them. As long as it
    /// does, the setting is what it was, byte for byte.
    std::vector<std::string> initial_;
    std::vector<std::string> shown_;
};

/// What `done` hears.
constexpr std::uint32_t was_cancelled = 0;
constexpr std::uint32_t was_accepted = 1;

constexpr Qt::WindowFlags window_flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                                         | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

SettingsWindow::SettingsWindow(const SettingsRequest& request, QWidget* parent, CompletionNotify& done)
    : QDialog(parent, window_flags), action_(&request.action), done_(&done), request_(request),
      controls_(request.dialog.window, *this),
      pattern_tip_(*this, [this, parent](const QWidget& box, PatternTrial& trial) {
          // What is wrong there has been said, and stays.
          if (tip_.balloon() && tip_.balloon()->control() == &box)
              return PatternResult();
          PatternSampleSource* source = find_pattern_samples(parent);
          return trial(texts(), source ? source->pattern_sample(*action_) : nullptr);
      }) {
    const DialogTemplate& dialog = request.dialog.window;
    setWindowTitle(QString::fromUtf8(dialog.title));
    if (dialog.resizing)
        resizer_ = new AnchorResizer(*this, controls_, *dialog.resizing);
    arrange();
    is_arranged_ = true;
    services_.enter(*this);
    initial_.assign(request.settings.texts().begin(), request.settings.texts().end());
    for (const SettingControl& bound : request.dialog.controls) {
        fill(bound);
        watch_changes(bound);
    }
    // As if the person had come there by Tab: a text is selected, ready to be typed over.
    controls_.get(request.dialog.controls.front().id).setFocus(Qt::TabFocusReason);
    if (parent)
        parent->window()->installEventFilter(this);
    connect(&controls_.get<QPushButton>(ok_id), &QPushButton::clicked, this, [this] { accept(); });
    connect(&controls_.get<QPushButton>(cancel_id), &QPushButton::clicked, this, [this] { reject(); });
}

SettingsWindow::~SettingsWindow() {
    hide(); // while there is still somebody to hear of the focus that the controls lose
    services_.leave();
    tip_.close();
}

/// An owner that waits for this window can do nothing with the keyboard: a click into it leads here.
bool SettingsWindow::eventFilter(QObject* owner, QEvent* event) {
    if (event->type() == QEvent::WindowActivate && owner == parentWidget()->window() && isVisible()
        && !parentWidget()->isEnabled())
        QTimer::singleShot(0, this, [this] {
            raise();
            activateWindow();
        });
    return QDialog::eventFilter(owner, event);
}

void SettingsWindow::fill(const SettingControl& bound) {
    QWidget& widget = controls_.get(bound.id);
    const std::string& text = initial_[bound.setting];
    if (bound.history == &field_name_history)
        attach_with_completion(controls_.get<DropDownBox>(bound.id), text);
    else if (bound.history)
        attach(controls_.get<DropDownBox>(bound.id), *bound.history, text);
    else
        set_control_text(widget, text);
    shown_.push_back(control_text(widget));
}

/// What patterns give may depend on every control.
void SettingsWindow::watch_changes(const SettingControl& bound) {
    QWidget& widget = controls_.get(bound.id);
    const auto refresh = [this] { pattern_tip_.refresh(); };
    if (const auto* box = dynamic_cast<DropDownBox*>(&widget))
        connect(box, &QComboBox::editTextChanged, this, refresh);
    else if (const auto* edit = dynamic_cast<QLineEdit*>(&widget))
        connect(edit, &QLineEdit::textChanged, this, refresh);
    else if (const auto* lines = dynamic_cast<QPlainTextEdit*>(&widget))
        connect(lines, &QPlainTextEdit::textChanged, this, refresh);
    if (bound.trial)
        pattern_tip_.watch(widget, *bound.trial);
}

void SettingsWindow::arrange() {
    const QSize growth = resizer_ ? resizer_->growth() : QSize(0, 0);
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    controls_.place();
    if (resizer_) {
        resizer_->record();
        resize(size() + growth);
    } else {
        setFixedSize(size());
    }
}

void SettingsWindow::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    // The controls hear of it after their window.
    if (is_arranged_ && (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange))
        QTimer::singleShot(0, this, [this] { arrange(); });
}

std::vector<std::string> SettingsWindow::texts() const {
    std::vector<std::string> texts = initial_;
    for (std::size_t i = 0; i < shown_.size(); ++i) {
        const SettingControl& bound = request_.dialog.controls[i];
        std::string text = control_text(controls_.get(bound.id));
        if (text != shown_[i])
            texts[bound.setting] = std::move(text);
    }
    return texts;
}

void SettingsWindow::refuse(const SettingControl& rejected) {
    QWidget& widget = controls_.get(rejected.id);
    widget.setFocus(Qt::OtherFocusReason);
    pattern_tip_.step_back();
    tip_.show(rejected.check.message, widget);
}

void SettingsWindow::accept() {
    guarded([&] {
        if (is_completed_)
            return;
        std::vector<std::string> confirmed = texts();
        if (const SettingControl* rejected = first_rejected(request_.dialog, confirmed))
            return refuse(*rejected);
        store_settings(request_, std::move(confirmed));
        finish(was_accepted);
    });
}

void SettingsWindow::reject() {
    guarded([&] { finish(was_cancelled); });
}

void SettingsWindow::finish(std::uint32_t code) {
    if (std::exchange(is_completed_, true))
        return;
    const QPointer<SettingsWindow> guard(this);
    const auto go = [&] {
        if (!guard) // whoever was told has deleted the owner
            return;
        pattern_tip_.step_back();
        tip_.close();
        hide();
        deleteLater();
    };
    try {
        Ref<CompletionNotify>(done_)->notify(code);
    } catch (...) {
        go();
        throw;
    }
    go();
}

} // namespace

void open_settings_window(const SettingsRequest& request, WindowHandle parent, CompletionNotify& done) {
    if (!dynamic_cast<QApplication*>(QCoreApplication::instance()))
        throw exception_win32(ENOTSUP, uFormatSystemErrorMessage(ENOTSUP));
    auto* window = new SettingsWindow(request, static_cast<QWidget*>(parent), done); // deletes itself
    window->show();
}

} // namespace quorvex
