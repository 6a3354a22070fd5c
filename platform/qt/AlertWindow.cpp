#include "platform/qt/AlertWindow.h"

#include "platform/desktop/MainLoop.h"
#include "platform/process/SystemLog.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace paperline {

int runAlertWindow(const Alert& alert) {
    if (terminationRequested()) { // perhaps there is no user any more to press the button
        systemLog("paperline: " + alert.message +
                  (alert.informativeText.empty() ? "" : " " + alert.informativeText));
        return alertDefaultReturn;
    }
    const DelayedMessagesHold hold;
    QMessageBox window(QApplication::activeWindow());
    window.setIcon(QMessageBox::Warning);
    window.setWindowTitle(QString::fromStdString(alert.title));
    // Paths and device names may look like markup.
    window.setTextFormat(Qt::PlainText);
    window.setText(QString::fromStdString(alert.message));
    window.setInformativeText(QString::fromStdString(alert.informativeText));
    QPushButton* button = alert.defaultButton.empty()
                              ? window.addButton(QMessageBox::Ok)
                              : window.addButton(QString::fromStdString(alert.defaultButton),
                                                 QMessageBox::AcceptRole);
    button->setIcon({});
    window.setDefaultButton(button);
    window.setEscapeButton(button);
    window.exec();
    // There is only one button, so closing the window counts as pressing it.
    return alertDefaultReturn;
}

void installAlertWindow() {
    setAlertPresenter(runAlertWindow);
}

} // namespace paperline
