// Mnemonics of menu entries.
#pragma once

#include <QList>
#include <QSet>
#include <QString>

#include <string>

class QAction;

namespace paperline {

// The text without its mnemonic marker "&".
QString plainTitle(const QString& title);

// Gives each entry of a menu or menu bar another letter: the first of a word if possible, else any.
// Texts in Chinese, Japanese, Korean and Arabic get none.
class MnemonicChooser {
public:
    // `present` are entries of the menu with their letters.
    explicit MnemonicChooser(const QList<QAction*>& present = {});

    QString withMnemonic(const QString& text);
    void setTitle(QAction* action, const std::string& text); // null: nothing

private:
    qsizetype freeLetter(const QString& text) const; // -1: none

    QSet<QChar> taken_;
};

} // namespace paperline
