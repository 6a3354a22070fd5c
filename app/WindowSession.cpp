#include "app/WindowSession.h"

#include "app/AppDelegate.h"
#include "app/BrandProfile.h"
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

#include <csignal>
#include <memory>
#include <sys/signalfd.h>
#include <unistd.h>

namespace paperline {
namespace {

// SIGTERM, SIGINT and SIGHUP end the application the normal way: settings written, language
// restored.
std::unique_ptr<QSocketNotifier> endOnSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&ending, number);
    if (pthread_sigmask(SIG_BLOCK, &ending, nullptr) != 0)
        return nullptr;
    const int descriptor = signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor < 0)
        return nullptr;
    auto notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, [descriptor] {
        signalfd_siginfo information{};
        while (read(descriptor, &information, sizeof information) == sizeof information)
            requestTermination();
    });
    return notifier;
}

// A word on screen while scanners are looked for.
void waitForScanners() {
    QLabel notice;
    discoverSources([&notice] {
        notice.setWindowFlags(Qt::SplashScreen);
        notice.setText(QObject::tr("Looking for scanners…"));
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

int runWindowSession(int& argc, char** argv) {
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

    AppDelegate controller;
    instance.whenRaised([&controller] { raiseWindow(controller); });
    // Launch runs inside the event loop, so that ending it from within works everywhere.
    QTimer::singleShot(0, &application, [&controller] {
        waitForScanners();
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
