#include "platform/desktop/Alert.h"

#include "platform/process/SystemLog.h"

#include <utility>

namespace paperline {
namespace {

AlertPresenter& presenter() {
    static AlertPresenter installed;
    return installed;
}

} // namespace

void setAlertPresenter(AlertPresenter newPresenter) {
    presenter() = std::move(newPresenter);
}

int runAlertPanel(const Alert& alert) {
    // A copy: the presenter may install another one while it runs.
    if (const AlertPresenter present = presenter())
        return present(alert);
    systemLog(alert.message);
    if (!alert.informativeText.empty())
        systemLog(alert.informativeText);
    return alertDefaultReturn;
}

} // namespace paperline
