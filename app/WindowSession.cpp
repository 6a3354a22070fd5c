#include "app/WindowSession.h"

#include "app/LaunchTexts.h"
#include "app/SourceDiscovery.h"
#include "base/BrandProfile.h"
#include "controller/AppDelegate.h"
#include "output/KeptPages.h"
#include "output/ScratchNames.h"
#include "platform/desktop/MainLoop.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"
#include "platform/qt/AlertWindow.h"
#include "platform/qt/DesktopServices.h"
#include "platform/qt/EndingSignals.h"
#include "platform/qt/SingleInstance.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>

namespace paperline {
namespace {

// A word on screen while scanners are looked for.
void waitForScanners(uint32_t brandNumber) {
    QLabel notice;
    discoverSources([&notice, brandNumber] {
        notice.setWindowFlags(Qt::SplashScreen);
        notice.setText(
            QString::fromStdString(launchText(bundlePath(), brandNumber, "LookingForScanners")));
        notice.setMargin(24);
        notice.show();
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    });
}

void raiseWindow(const AppDelegate& controller) {
    if (controller.paperlineWindow == nullptr)
        return;
    controller.paperlineWindow->show();
    controller.paperlineWindow->raise();
    controller.paperlineWindow->activateWindow();
}

} // namespace

int runWindowSession(int& argc, char** argv, const LaunchOptions& options) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(
        false); // closing the main window asks for termination itself
    QApplication::setDesktopFileName("paperline");
    const EndingSignals endingSignals;

    SingleInstance instance(instanceFolder());
    if (instance.start() == SingleInstance::Role::second)
        return 0; // the running window comes to the front
    std::string error;
    if (!chooseScratchRoot(ScratchKind::sharedTmp, error)) {
        systemLog("paperline: " + error);
        return 1;
    }
    installAlertWindow();
    installDesktopServices();

    AppDelegate controller(options);
    instance.whenRaised([&controller] { raiseWindow(controller); });
    // Launch runs inside the event loop, so that ending it from within works everywhere.
    QTimer::singleShot(0, &application, [&controller] {
        waitForScanners(controller.launchOptions().brand);
        if (controller.init() == nullptr)
            return;
        controller.loadInterface();
        controller.applicationWillFinishLaunching();
        controller.applicationDidFinishLaunching();
    });
    QApplication::exec();
    controller.applicationWillTerminate();
    removeAllButPages(scratchPath(stagingFolderName));
    endTwainSession();
    return 0;
}

} // namespace paperline
