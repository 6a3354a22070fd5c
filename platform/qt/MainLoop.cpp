#include "platform/MainLoop.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <utility>
#include <vector>

namespace paperline {
namespace {

int holdCount = 0; // main thread only
bool terminating = false;

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

} // namespace

bool isMainThread() {
    return QCoreApplication::instance() == nullptr ||
           QThread::currentThread() == QCoreApplication::instance()->thread();
}

void postToMainThread(std::function<void()> action) {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), std::move(action), Qt::QueuedConnection);
}

void performAfterDelay(double seconds, std::function<void()> action) {
    if (!isMainThread()) {
        postToMainThread([seconds, action = std::move(action)]() mutable {
            performAfterDelay(seconds, std::move(action));
        });
        return;
    }
    QTimer::singleShot(static_cast<int>(seconds * 1000.0),
                       Qt::PreciseTimer,
                       QCoreApplication::instance(),
                       [action = std::move(action)]() mutable { runOrWait(std::move(action)); });
}

DelayedMessagesHold::DelayedMessagesHold() {
    ++holdCount;
}

DelayedMessagesHold::~DelayedMessagesHold() {
    if (--holdCount > 0)
        return;
    for (std::function<void()>& action : std::exchange(waitingActions(), {}))
        postToMainThread([action = std::move(action)]() mutable { runOrWait(std::move(action)); });
}

bool delayedMessagesAreHeld() {
    return holdCount > 0;
}

void requestTermination() {
    if (terminating)
        return;
    terminating = true;
    postToMainThread([] { QCoreApplication::quit(); });
}

bool terminationRequested() {
    return terminating;
}

void resetTerminationRequest() {
    terminating = false;
}

void repaintWithoutInput() {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

} // namespace paperline
