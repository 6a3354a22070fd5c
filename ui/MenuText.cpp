#include "ui/MenuText.h"

#include <QAction>
#include <QKeySequence>

namespace paperline {
namespace {

bool isAlphabetic(QChar c) {
    // Leaves out the Japanese length mark, whose script is "common".
    if (!c.isLetterOrNumber() || c.category() == QChar::Letter_Modifier)
        return false;
    switch (c.script()) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Hangul:
    // An underline would separate joined letters.
    case QChar::Script_Arabic:
        return false;
    default:
        return true;
    }
}

bool startsWord(const QString& text, qsizetype position) {
    return position == 0 || text.at(position - 1).isSpace();
}

} // namespace

QString plainTitle(const QString& title) {
    QString plain;
    plain.reserve(title.size());
    for (qsizetype i = 0; i < title.size(); ++i) {
        if (title.at(i) == u'&' && i + 1 < title.size())
            ++i;
        plain.append(title.at(i));
    }
    return plain;
}

MnemonicChooser::MnemonicChooser(const QList<QAction*>& present) {
    for (const QAction* item : present) {
        const QKeySequence key = QKeySequence::mnemonic(item->text());
        if (!key.isEmpty())
            taken_.insert(QChar(key[0].key()).toLower());
    }
}

QString MnemonicChooser::withMnemonic(const QString& text) {
    const qsizetype position = freeLetter(text);
    QString title;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (i == position || text.at(i) == u'&')
            title.append(u'&');
        title.append(text.at(i));
    }
    if (position >= 0)
        taken_.insert(text.at(position).toLower());
    return title;
}

void MnemonicChooser::setTitle(QAction* action, const std::string& text) {
    if (action != nullptr)
        action->setText(withMnemonic(QString::fromStdString(text)));
}

qsizetype MnemonicChooser::freeLetter(const QString& text) const {
    for (const bool onlyWordStarts : {true, false}) {
        for (qsizetype i = 0; i < text.size(); ++i) {
            if (onlyWordStarts && !startsWord(text, i))
                continue;
            if (isAlphabetic(text.at(i)) && !taken_.contains(text.at(i).toLower()))
                return i;
        }
    }
    return -1;
}

} // namespace paperline
