// What the tests of platform/qt/ share.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <functional>

namespace paperline::testing_support {

// Set when an action ran that was handed in before there was an application.
extern bool ranWithoutApplication;

// Turns the event loop until the condition holds; false when it does not within ten seconds.
inline bool turnUntil(const std::function<bool()>& condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > 10'000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
    return true;
}

// Turns the event loop often enough for everything that is due to run.
inline void turnAWhile() {
    for (int turn = 0; turn < 20; ++turn) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
}

} // namespace paperline::testing_support
