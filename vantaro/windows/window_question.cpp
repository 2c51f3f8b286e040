#include "vantaro/windows/window_question.h"

#include "vantaro/windows/shown_text.h"

#include <QMessageBox>
#include <QPushButton>

#include <array>

namespace vantaro::core {

namespace {

struct Answer {
    std::uint32_t bit;
    QMessageBox::StandardButton standard;
};

/// From the most cautious one.
constexpr std::array<Answer, 7> answers{{{button::cancel, QMessageBox::Cancel},
                                         {button::no, QMessageBox::No},
                                         {button::abort, QMessageBox::Abort},
                                         {button::ignore, QMessageBox::Ignore},
                                         {button::ok, QMessageBox::Ok},
                                         {button::yes, QMessageBox::Yes},
                                         {button::retry, QMessageBox::Retry}}};

QMessageBox::Icon icon_of(std::uint32_t icon) {
    switch (icon) {
    case popup_icon::information:
        return QMessageBox::Information;
    case popup_icon::error:
        return QMessageBox::Critical;
    case popup_icon::warning:
        return QMessageBox::Warning;
    default:
        return QMessageBox::NoIcon;
    }
}

} // namespace

std::uint32_t WindowQuestion::ask(const Request& request) {
    // On the heap: a parent that is deleted meanwhile takes the window along.
    const QPointer<QMessageBox> box = new QMessageBox(static_cast<QWidget*>(request.parent));
    box->setWindowModality(Qt::ApplicationModal);
    box->setWindowTitle(shown_text(request.title));
    box->setTextFormat(Qt::PlainText);
    box->setText(shown_lines(request.message));
    box->setIcon(icon_of(request.icon));

    std::uint32_t result = 0;
    for (const Answer& answer : answers) {
        if (!(request.buttons & answer.bit))
            continue;
        QPushButton* offered = box->addButton(answer.standard);
        QObject::connect(offered, &QPushButton::clicked, box, [&result, &answer] { result = answer.bit; });
        if (!box->escapeButton())
            box->setEscapeButton(offered);
        if (request.default_button & answer.bit)
            box->setDefaultButton(offered);
    }

    const ModalGuard::Open open(guard_, *box);
    box->exec();
    delete box;
    if (result != 0)
        return result;
    for (const Answer& answer : answers)
        if (request.buttons & answer.bit)
            return answer.bit;
    return button::ok; // none was asked for: the window had the one that QMessageBox adds
}

} // namespace vantaro::core
