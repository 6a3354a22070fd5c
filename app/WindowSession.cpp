#include "app/WindowSession.h"

#include "app/SettingsFile.h"
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

// Shows a notice while the first search for scanners runs.
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
    QApplication::setQuitOnLastWindowClosed(false); // windowWillClose() ends the program
    QApplication::setDesktopFileName("paperline");
    const EndingSignals endingSignals;

    SingleInstance instance(instanceFolder());
    if (instance.start() == SingleInstance::Role::second)
        return 0; // the first one shows its window
    std::string error;
    if (!chooseScratchRoot(ScratchKind::sharedTmp, error)) {
        systemLog("paperline: " + error);
        return 1;
    }
    installAlertWindow();
    installDesktopServices();

    AppDelegate controller(options);
    instance.whenRaised([&controller] { raiseWindow(controller); });
    // Inside the event loop, which the launch may have to end.
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
