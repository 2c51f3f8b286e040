#include "vantaro/windows/window_message.h"

#include "vantaro/windows/shown_text.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>
#include <QTextBlock>

#include <algorithm>
#include <optional>

namespace vantaro::core {

namespace {

std::optional<QStyle::StandardPixmap> picture_of(std::uint32_t icon) {
    switch (icon) {
    case popup_icon::information:
        return QStyle::SP_MessageBoxInformation;
    case popup_icon::error:
        return QStyle::SP_MessageBoxCritical;
    case popup_icon::warning:
        return QStyle::SP_MessageBoxWarning;
    default:
        return std::nullopt;
    }
}

/// Shows a text; as large as the text wants to be, within limits, and scrolling beyond them.
class MessageText final : public QPlainTextEdit {
public:
    MessageText(const QString& text, QWidget* parent) : QPlainTextEdit(text, parent) {
        setAccessibleName("Message");
        setReadOnly(true);
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        setFrameShape(QFrame::NoFrame);
        viewport()->setBackgroundRole(QPalette::Window);
    }

    QSize sizeHint() const override {
        const QFontMetrics metrics = fontMetrics();
        const int widest = 72 * metrics.averageCharWidth();
        const int most_lines = 24;
        int width = 24 * metrics.averageCharWidth();
        int lines = 0;
        // What comes behind that many lines does not make the window larger.
        for (QTextBlock block = document()->begin(); block.isValid() && lines < most_lines;
             block = block.next()) {
            const int needed = metrics.horizontalAdvance(block.text()) + metrics.averageCharWidth();
            width = std::max(width, std::min(needed, widest));
            lines += 1 + needed / widest;
        }
        const int around = 2 * static_cast<int>(document()->documentMargin());
        return {width + around + verticalScrollBar()->sizeHint().width(),
                std::min(lines, most_lines) * metrics.lineSpacing() + around};
    }
    QSize minimumSizeHint() const override { return sizeHint().boundedTo(QPlainTextEdit::minimumSizeHint()); }
};

} // namespace

void WindowMessage::show(const char* text, std::size_t length, const char* title, std::uint32_t icon) {
    auto* window = new QDialog(parent_); // deletes itself
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(shown_text(title));

    auto* layout = new QGridLayout(window);
    if (const auto picture = picture_of(icon)) {
        auto* label = new QLabel(window);
        const int size = window->style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
        label->setPixmap(window->style()->standardIcon(*picture).pixmap(size));
        label->setAlignment(Qt::AlignTop);
        layout->addWidget(label, 0, 0);
        layout->setHorizontalSpacing(12);
    }
    auto* shown = new MessageText(shown_lines({text, length}), window);
    layout->addWidget(shown, 0, 1);
    layout->setColumnStretch(1, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, window);
    QObject::connect(buttons, &QDialogButtonBox::accepted, window, [window] { window->close(); });
    layout->addWidget(buttons, 1, 0, 1, 2);

    buttons->button(QDialogButtonBox::Ok)->setFocus();
    window->show();
}

} // namespace vantaro::core
