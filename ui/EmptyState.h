// Covers the page area until there is a page to show, and says what to do.
#pragma once

#include <QWidget>

class QLabel;

namespace paperline {

class EmptyState : public QWidget {
    Q_OBJECT

public:
    // Lies over `covered` and follows its size.
    EmptyState(const QIcon& picture, QWidget* covered);

    void setTexts(const QString& title, const QString& hint);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void fitFonts();
    void fitHint();
    void showPicture();

    QIcon icon_;
    QLabel* picture_;
    QLabel* title_;
    QLabel* hint_;
};

} // namespace paperline
