#include "platform/desktop/MainLoop.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace paperline {
namespace {

int holdCount = 0; // main thread only
std::atomic<bool> terminating{false};

std::vector<std::function<void()>>& waitingActions() {
    static std::vector<std::function<void()>> actions;
    return actions;
}

void runOrWait(std::function<void()> action) {
    if (holdCount > 0)
        waitingActions().push_back(std::move(action));
    else
        action();
}

int timerMilliseconds(double seconds) {
    constexpr double longest = std::numeric_limits<int>::max();
    const double milliseconds = std::round(seconds * 1000.0);
    return milliseconds > 0 ? static_cast<int>(std::min(milliseconds, longest)) : 0;
}

} // namespace

bool isMainThread() {
    return QCoreApplication::instance() == nullptr ||
           QThread::currentThread() == QCoreApplication::instance()->thread();
}

void postToMainThread(std::function<void()> action) {
    if (QCoreApplication* application = QCoreApplication::instance())
        QMetaObject::invokeMethod(application, std::move(action), Qt::QueuedConnection);
}

void performAfterDelay(double seconds, std::function<void()> action) {
    QCoreApplication* application = QCoreApplication::instance();
    if (application == nullptr)
        return;
    if (!isMainThread()) {
        postToMainThread([seconds, action = std::move(action)]() mutable {
            performAfterDelay(seconds, std::move(action));
        });
        return;
    }
    QTimer::singleShot(timerMilliseconds(seconds),
                       Qt::PreciseTimer,
                       application,
                       [action = std::move(action)]() mutable { runOrWait(std::move(action)); });
}

DelayedMessagesHold::DelayedMessagesHold() {
    ++holdCount;
}

DelayedMessagesHold::~DelayedMessagesHold() {
    if (--holdCount > 0)
        return;
    // Posted, not called: the code that ends the hold has not finished its work.
    for (std::function<void()>& action : std::exchange(waitingActions(), {}))
        postToMainThread([action = std::move(action)]() mutable { runOrWait(std::move(action)); });
}

bool delayedMessagesAreHeld() {
    return holdCount > 0;
}

void requestTermination() {
    if (!terminating.exchange(true))
        postToMainThread([] { QCoreApplication::quit(); });
}

bool terminationRequested() {
    return terminating;
}

void resetTerminationRequest() {
    terminating = false;
}

void repaintWithoutInput() {
    // The caller is in the middle of a page: delayed actions must wait.
    const DelayedMessagesHold hold;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

} // namespace paperline
