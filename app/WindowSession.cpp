#include "app/WindowSession.h"

#include "app/AppDelegate.h"
#include "app/BrandProfile.h"
#include "app/LaunchTexts.h"
#include "app/SourceDiscovery.h"
#include "platform/Files.h"
#include "platform/MainLoop.h"
#include "platform/Places.h"
#include "platform/SystemLog.h"
#include "platform/qt/AlertWindow.h"
#include "platform/qt/DesktopServices.h"
#include "platform/qt/SingleInstance.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QSocketNotifier>
#include <QTimer>

#include <fcntl.h>

#include <csignal>
#include <memory>
#include <unistd.h>

namespace paperline {
namespace {

int endingPipe[2] = {-1, -1};

void noteEndingSignal(int /*number*/) {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(endingPipe[1], &byte, 1);
}

// SIGTERM, SIGINT and SIGHUP end the application the normal way: settings written, language
// restored. A handler with a pipe, because a blocked signal would stay blocked in the helper
// programs.
std::unique_ptr<QSocketNotifier> endOnSignals() {
    if (pipe2(endingPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return nullptr;
    struct sigaction action {};
    action.sa_handler = noteEndingSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaction(number, &action, nullptr);
    auto notifier = std::make_unique<QSocketNotifier>(endingPipe[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, [] {
        char byte = 0;
        while (read(endingPipe[0], &byte, 1) == 1)
            requestTermination();
    });
    return notifier;
}

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
    const std::unique_ptr<QSocketNotifier> signalNotifier = endOnSignals();

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
    removePath(scratchPath("/tmp/CorvaneTempImage"));
    endTwainSession();
    return 0;
}

} // namespace paperline
