#include "app/ScanCommand.h"

#include "app/SourceDescription.h"
#include "app/SourceDiscovery.h"
#include "app/Watchdog.h"
#include "base/FileFormats.h"
#include "controller/AppDelegate.h"
#include "output/KeptPages.h"
#include "output/ScratchNames.h"
#include "platform/desktop/Alert.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/Descriptor.h"
#include "platform/files/PathText.h"
#include "platform/host/DatePatterns.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"
#include "platform/qt/EndingSignals.h"
#include "twain/TWAINHandler.h"
#include "twain/manager/DataSourceManager.h"
#include "ui/SaveFolderText.h"
#include "ui/SaveFolderTextField.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>

namespace paperline {
namespace {

// How long a call into the source may go on after a signal has told the command to end.
constexpr std::chrono::seconds callLimitAfterSignal{3};

// Writes result lines, unbuffered and each as a whole.
class Results {
public:
    explicit Results(int descriptor) : descriptor_(descriptor) {}

    void line(std::string text) {
        text += '\n';
        failed_ = !writeAll(descriptor_, text) || failed_;
    }
    bool failed() const { return failed_; }

private:
    int descriptor_;
    bool failed_ = false;
};

std::string jsonText(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

QJsonObject pageObject(const SavedFile& file) {
    const FileFormat* format = fileFormatOf(file.fileFormat);
    return {{"path", QString::fromStdString(file.path)},
            {"format", format != nullptr ? format->commandName : ""},
            {"width", file.widthPixels},
            {"height", file.heightPixels},
            {"bits", file.bitsPerPixel},
            {"resolution", file.resolutionDpi},
            {"pages", file.pages}};
}

// Counts of one scan. The watchdog's thread reads them too.
struct ScanTally {
    std::atomic<int> files = 0;
    std::atomic<int> pages = 0;
    std::atomic<int> messages = 0;
    bool sourceOpened = false; // by the last attempt
};

std::string totalsObject(const ScanTally& tally, bool isComplete) {
    return jsonText(
        {{"files", tally.files.load()}, {"pages", tally.pages.load()}, {"complete", isComplete}});
}

// The watchdog times every call to the source; the tally notes whether the last one opened it.
void watchCalls(Watchdog& watchdog, ScanTally& tally) {
    auto message = std::make_shared<uint16_t>(twain::MSG_NULL);
    setDsmCallObserver({.willCall =
                            [&watchdog, message](uint32_t, uint16_t, uint16_t asked) {
                                *message = asked;
                                watchdog.callStarts();
                            },
                        .didCall =
                            [&watchdog, &tally, message](uint16_t code) {
                                watchdog.callEnds();
                                if (*message == twain::MSG_OPENDS)
                                    tally.sourceOpened = code == twain::TWRC_SUCCESS;
                            }});
}

// Messages of the window become lines on standard error.
void installCommandLineMessages(ScanTally& tally) {
    setAlertPresenter([&tally](const Alert& alert) {
        ++tally.messages;
        systemLog("paperline: " + alert.message +
                  (alert.informativeText.empty() ? "" : " " + alert.informativeText));
        return alertDefaultReturn;
    });
}

void passOptionsToSource(const std::vector<std::string>& options) {
    std::string lines;
    for (const std::string& option : options)
        lines += option + "\n";
    if (!lines.empty())
        setenv("PAPERLINE_SOURCE_OPTIONS", lines.c_str(), 1);
}

// The software scanner is hidden beside real ones, unless a source is asked for by name.
void prepareSources(const std::string& sourceName) {
    if (!sourceName.empty())
        setenv("PAPERLINE_SOFTWARE_SCANNER", "1", 1);
    discoverSources([] { systemLog("paperline: looking for scanners"); });
}

bool knowsSource(const AppDelegate& controller, const std::string& name) {
    for (const TWAIN_INFO& source : controller.dsArray)
        if (source.productNameText() == name)
            return true;
    return false;
}

// The scan takes folder and name template from the text of the save-folder field.
void setFolderAndName(AppDelegate& controller, const ScanRequest& request) {
    if (!request.folder && !request.name)
        return;
    const QString folder =
        request.folder ? QDir::current().absoluteFilePath(QString::fromStdString(*request.folder))
                       : QString::fromStdString(
                             folderOfPages(controller.currentSaveFolder->folderText(), true));
    controller.currentSaveFolder->setText(QString::fromStdString(
        appendPathComponent(folder.toStdString(), request.name.value_or("Image"))));
}

std::unique_ptr<AppDelegate> launch(const std::string& sourceName) {
    LaunchOptions options;
    options.commandLine = true;
    options.sourceName = sourceName;
    auto controller = std::make_unique<AppDelegate>(options);
    return controller->init() != nullptr ? std::move(controller) : nullptr;
}

// Scans to its end. False when the source sent no message within the timeout, or when the command
// was told to end first.
bool scanToTheEnd(AppDelegate& controller, int timeoutSeconds) {
    QEventLoop loop;
    bool ended = false;
    controller.scanEndedObserver = [&loop, &ended] {
        ended = true;
        QTimer::singleShot(0, &loop, &QEventLoop::quit);
    };
    QTimer silence;
    silence.setSingleShot(true);
    QObject::connect(&silence, &QTimer::timeout, &loop, &QEventLoop::quit);
    silence.start(std::chrono::seconds(timeoutSeconds));
    controller.toolBarItemScan(nullptr);
    if (!ended && !terminationRequested())
        loop.exec();
    controller.scanEndedObserver = nullptr;
    return ended;
}

// Pages staged for a multi-page file move to a folder of the user's.
void keepPagesInNoFile() {
    for (const KeptPages& kept : keepAllPages(scratchPath(stagingFolderName), keptFolderForNow())) {
        if (!kept.folder.empty())
            systemLog("paperline: pages that are in no file yet are kept in " + kept.folder);
        if (!kept.leftFolder.empty())
            systemLog("paperline: pages that are in no file yet are left in " + kept.leftFolder);
    }
}

// Runs on the watchdog's thread. The main thread hangs inside the source, so nothing else runs.
void giveUpOnHungSource(const ScanRequest& request, const ScanTally& tally, Results results) {
    const bool isInterrupted = endingSignalHasCome();
    systemLog(isInterrupted
                  ? "paperline: interrupted. Pages saved so far are complete."
                  : "paperline: the source hangs; giving up. Pages saved so far are complete.");
    keepPagesInNoFile();
    endScratch();
    if (request.json)
        results.line(totalsObject(tally, false));
    _exit(isInterrupted ? exitNotAllSaved : exitSourceHung);
}

// Some writers report a page as saved whose file could not be written. Such a page is in the list
// of paths, but was never counted as complete.
void tellUnwrittenPages(const AppDelegate& controller, ScanTally& tally) {
    const auto listed = static_cast<int>(controller.imageFilePath.size());
    if (listed <= tally.pages)
        return;
    ++tally.messages;
    systemLog("paperline: " + std::to_string(listed - tally.pages) +
              " of the pages could not be written");
}

// Exit code of a scan that ran.
int exitCodeOf(const AppDelegate& controller, const ScanTally& tally, bool ended, bool allPrinted) {
    if (terminationRequested()) {
        systemLog("paperline: interrupted");
        return exitNotAllSaved;
    }
    if (!ended) {
        systemLog("paperline: the source does not answer");
        return exitSourceHung;
    }
    if (controller.sourceHung)
        return exitSourceHung;
    if (!tally.sourceOpened)
        return exitSourceNotOpened;
    return tally.files > 0 && tally.messages == 0 && allPrinted ? exitSaved : exitNotAllSaved;
}

// Exit code when the launch ended before a scan.
int exitCodeWithoutScan(AppDelegate& controller, Results& results, bool json) {
    if (launchAborted && !controller.sourceHung)
        return exitSourceNotOpened;
    controller.tellKeptPages();
    if (json)
        results.line(totalsObject(ScanTally{}, false));
    if (controller.sourceHung)
        return exitSourceHung;
    systemLog("paperline: interrupted");
    return exitNotAllSaved;
}

} // namespace

void endScratch() {
    if (removeAllButPages(scratchPath(stagingFolderName)))
        removeOwnScratchRoot();
}

int takeStandardOutputForResults() {
    // A reader that closes the pipe must not end the scan.
    std::signal(SIGPIPE, SIG_IGN);
    // Closed in helper programs: one that outlives the command would keep a pipe's reader waiting.
    const int results = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (results >= 0)
        dup2(STDERR_FILENO, STDOUT_FILENO);
    return results;
}

int runScanCommand(const ScanRequest& request, int resultDescriptor) {
    const EndingSignals endingSignals;
    Results results(resultDescriptor);
    ScanTally tally;
    installCommandLineMessages(tally);
    prepareSources(request.source);
    passOptionsToSource(request.options);

    Watchdog watchdog(std::chrono::seconds(request.timeoutSeconds),
                      [&, results] { giveUpOnHungSource(request, tally, results); },
                      {.limit = callLimitAfterSignal, .applies = endingSignalHasCome});
    watchCalls(watchdog, tally);

    const std::unique_ptr<AppDelegate> controller = launch(request.source);
    if (!controller)
        return exitSourceNotOpened;
    if (controller->dsArray.empty() ||
        (!request.source.empty() && !knowsSource(*controller, request.source))) {
        systemLog(request.source.empty()
                      ? "paperline: no data source is installed"
                      : "paperline: no data source is named '" + request.source + "'");
        return exitNoSuchSource;
    }
    controller->loadInterface();
    controller->applicationWillFinishLaunching();
    controller->applicationDidFinishLaunching();
    if (launchAborted || terminationRequested())
        return exitCodeWithoutScan(*controller, results, request.json);
    tally.messages = 0; // those of the launch are about earlier scans

    if (request.fileFormat)
        controller->profileFileformatSelect = *request.fileFormat;
    setFolderAndName(*controller, request);
    controller->savedFileObserver = [&](const SavedFile& file) {
        ++tally.files;
        tally.pages += file.pages;
        results.line(request.json ? jsonText(pageObject(file)) : file.path);
    };
    const bool ended = scanToTheEnd(*controller, request.timeoutSeconds);
    tellUnwrittenPages(*controller, tally);
    if (request.json)
        results.line(totalsObject(tally, ended && tally.messages == 0 && !terminationRequested()));
    controller->applicationWillTerminate();
    endTwainSession();
    setDsmCallObserver({});
    return exitCodeOf(*controller, tally, ended, !results.failed());
}

int runListSources(int resultDescriptor) {
    Results results(resultDescriptor);
    ScanTally tally;
    installCommandLineMessages(tally);
    prepareSources({});
    const std::unique_ptr<AppDelegate> controller = launch({});
    if (!controller)
        return exitNotAllSaved;
    for (const TWAIN_INFO& source : controller->dsArray)
        results.line(source.productNameText());
    return results.failed() ? exitNotAllSaved : exitSaved;
}

int runListOptions(const std::string& sourceName, int resultDescriptor) {
    ScanTally tally;
    installCommandLineMessages(tally);
    prepareSources(sourceName);
    const std::unique_ptr<AppDelegate> controller = launch(sourceName);
    if (!controller)
        return exitNotAllSaved;
    controller->SearchAllDS();
    for (const DsData& source : controller->dsDatas)
        if (source.ProductName == sourceName)
            return describeSource(source.dsPath, resultDescriptor);
    systemLog("paperline: no data source is named '" + sourceName + "'");
    return exitNoSuchSource;
}

} // namespace paperline
