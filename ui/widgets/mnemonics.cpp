#include "ui/widgets/mnemonics.h"

#include <QCheckBox>
#include <QLabel>

#include <algorithm>

namespace quorvex {

QString with_mnemonic(const QString& text, QSet<QChar>& taken) {
    for (const bool first_of_word : {true, false}) {
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar letter = text[i].toLower();
            const bool is_first = i == 0 || !text[i - 1].isLetter();
            if (!letter.isLetter() || is_first != first_of_word || taken.contains(letter))
                continue;
            taken.insert(letter);
            return QString(text).insert(i, '&');
        }
    }
    return text;
}

QChar mnemonic_of(const QString& text) {
    for (qsizetype i = 0; i + 1 < text.size(); ++i)
        if (text[i] == '&' && text[++i] != '&')
            return text[i].toLower();
    return {};
}

void add_mnemonics(const std::vector<QLabel*>& labels, const std::vector<QCheckBox*>& boxes,
                   QSet<QChar> taken) {
    const auto note = [&](const auto* widget) {
        if (const QChar letter = mnemonic_of(widget->text()); !letter.isNull())
            taken.insert(letter);
    };
    std::ranges::for_each(labels, note);
    std::ranges::for_each(boxes, note);
    const auto mark = [&](auto* widget) {
        if (!widget->text().contains('&'))
            widget->setText(with_mnemonic(widget->text(), taken));
    };
    std::ranges::for_each(labels, mark);
    std::ranges::for_each(boxes, mark);
}

} // namespace quorvex
