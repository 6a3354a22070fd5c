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
#include "ui/SaveFolderTextField.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
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

// A call that is under way when the command is told to end may take so long to come to its end.
constexpr std::chrono::seconds patienceAfterSignal{3};

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

// What came of a scan, gathered while it runs. The watchdog reads it too.
struct ScanTally {
    std::atomic<int> files = 0;
    std::atomic<int> pages = 0;
    std::atomic<int> messages = 0;
    bool sourceOpened = false; // for the scan itself, not only to see whether it can be
};

std::string totalsObject(const ScanTally& tally, bool isComplete) {
    return jsonText(
        {{"files", tally.files.load()}, {"pages", tally.pages.load()}, {"complete", isComplete}});
}

// The watchdog sees every call to the source; the tally whether the last opening went well.
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

// Windowless launch: messages become lines on standard error.
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

// A source asked for by name is shown even when it only stands in for missing scanners.
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

// The save-folder text that the scan takes apart again into folder and template.
void setFolderAndName(AppDelegate& controller, const ScanRequest& request) {
    const std::string stored = controller.currentSaveFolder->folderText();
    const bool namesFolderOnly = !stored.empty() && stored.back() == '/';
    const std::string folder = request.folder
                                   ? QDir::current()
                                         .absoluteFilePath(QString::fromStdString(*request.folder))
                                         .toStdString()
                                   : (namesFolderOnly ? stored : folderOfPath(stored));
    std::string name = namesFolderOnly ? "Image" : lastPathComponent(stored);
    if (request.folder)
        name = "Image";
    if (request.name)
        name = *request.name;
    if (!request.folder && !request.name)
        return;
    controller.currentSaveFolder->setText(
        QString::fromStdString(appendPathComponent(folder, name)));
}

void setFormat(AppDelegate& controller, const ScanRequest& request) {
    if (request.fileFormat)
        controller.profileFileformatSelect = *request.fileFormat;
}

std::unique_ptr<AppDelegate> launch(const std::string& sourceName) {
    LaunchOptions options;
    options.commandLine = true;
    options.sourceName = sourceName;
    auto controller = std::make_unique<AppDelegate>(options);
    return controller->init() != nullptr ? std::move(controller) : nullptr;
}

// Scans until the controls come back; false when the source never called back in time, or when the
// command was told to end before it did.
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

// Pages staged for a multi-page file are the user's.
void keepPagesInNoFile() {
    for (const KeptPages& kept : keepAllPages(scratchPath(stagingFolderName), keptFolderForNow())) {
        if (!kept.folder.empty())
            systemLog("paperline: pages that are in no file yet are kept in " + kept.folder);
        if (!kept.leftFolder.empty())
            systemLog("paperline: pages that are in no file yet are left in " + kept.leftFolder);
    }
}

// Runs on the watchdog's thread, while the main thread hangs inside the source and touches nothing.
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

// Some writers call a page saved that is on no disk; its path was never reported as complete.
void tellUnwrittenPages(const AppDelegate& controller, ScanTally& tally) {
    const auto listed = static_cast<int>(controller.imageFilePath.size());
    if (listed <= tally.pages)
        return;
    ++tally.messages;
    systemLog("paperline: " + std::to_string(listed - tally.pages) +
              " of the pages could not be written");
}

// What a scan that ran comes to.
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

// What a launch that came to nothing is worth.
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
    // Whoever reads the results may stop reading; the pages are scanned all the same.
    std::signal(SIGPIPE, SIG_IGN);
    // Not for helper programs: one that goes on searching would keep the reader of a pipe waiting.
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
                      {.limit = patienceAfterSignal, .isWanted = endingSignalHasCome});
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
    tally.messages = 0; // those so far were about earlier scans

    setFormat(*controller, request);
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
