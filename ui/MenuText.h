// Titles of menu entries: translated text in, text with a mnemonic out.
#pragma once

#include <QList>
#include <QSet>
#include <QString>

#include <string>

class QAction;

namespace paperline {

// The text without its mnemonic marker; a doubled "&" is one.
QString plainTitle(const QString& title);

// Gives each entry of one menu (or menu bar) a letter of its own, as far as letters go: first the
// start of a word, then any letter. Texts without an alphabet (Chinese, Japanese, Korean) get none.
class MnemonicChooser {
public:
    // The letters of the entries that the menu has already are taken.
    explicit MnemonicChooser(const QList<QAction*>& present = {});

    QString withMnemonic(const QString& text);
    void setTitle(QAction* action, const std::string& text); // a missing action is left alone

private:
    qsizetype freeLetter(const QString& text) const; // -1: none

    QSet<QChar> taken_;
};

} // namespace paperline
