#include "ui/widgets/mnemonics.h"

#include <QCheckBox>
#include <QLabel>
#include <QSet>

namespace quorvex {

namespace {

/// The text with a letter marked that `taken` does not have: the first of a word if one is free.
QString marked(const QString& text, QSet<QChar>& taken) {
    if (text.contains('&'))
        return text;
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

} // namespace

void add_mnemonics(const std::vector<QLabel*>& labels, const std::vector<QCheckBox*>& boxes) {
    QSet<QChar> taken;
    for (QLabel* label : labels)
        label->setText(marked(label->text(), taken));
    for (QCheckBox* box : boxes)
        box->setText(marked(box->text(), taken));
}

} // namespace quorvex
