#include "platform/qt/AlertWindow.h"

#include "platform/desktop/MainLoop.h"
#include "platform/process/SystemLog.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace paperline {

int runAlertWindow(const Alert& alert) {
    if (terminationRequested()) { // nobody may be there to press the button
        systemLog("paperline: " + alert.message +
                  (alert.informativeText.empty() ? "" : " " + alert.informativeText));
        return alertDefaultReturn;
    }
    const DelayedMessagesHold hold;
    QMessageBox window(QApplication::activeWindow());
    window.setIcon(QMessageBox::Warning);
    window.setWindowTitle(QString::fromStdString(alert.title));
    // Paths and device names may hold what looks like markup.
    window.setTextFormat(Qt::PlainText);
    window.setText(QString::fromStdString(alert.message));
    window.setInformativeText(QString::fromStdString(alert.informativeText));
    QPushButton* button = alert.defaultButton.empty()
                              ? window.addButton(QMessageBox::Ok)
                              : window.addButton(QString::fromStdString(alert.defaultButton),
                                                 QMessageBox::AcceptRole);
    button->setIcon({}); // the word says it
    window.setDefaultButton(button);
    window.setEscapeButton(button);
    window.exec();
    // There is one button: however the window went away, it counts as pressed.
    return alertDefaultReturn;
}

void installAlertWindow() {
    setAlertPresenter(runAlertWindow);
}

} // namespace paperline
