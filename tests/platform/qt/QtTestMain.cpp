// main of the tests of platform/qt/: an application on Qt's offscreen platform.
#include "platform/desktop/MainLoop.h"

#include "QtTestSupport.h"

#include <QApplication>

#include <cstdlib>
#include <gmock/gmock.h>

namespace paperline::testing_support {
bool ranWithoutApplication = false;
}

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    // With nobody to run them these are dropped; the test looks at it later.
    const auto note = [] { paperline::testing_support::ranWithoutApplication = true; };
    paperline::postToMainThread(note);
    paperline::performAfterDelay(0, note);
    setenv("QT_QPA_PLATFORM", "offscreen", 0); // the build lists the tests without one
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
