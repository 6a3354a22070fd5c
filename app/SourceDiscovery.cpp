#include "app/SourceDiscovery.h"

#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/places/Places.h"
#include "platform/process/ProcessLife.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QThread>

#include <algorithm>
#include <string>
#include <vector>

namespace paperline {
namespace {

constexpr int longestFirstWaitMilliseconds = 5000;
// After a complete search without a scanner; every start waits this long.
constexpr int longestLaterWaitMilliseconds = 1200;
constexpr unsigned long pollMilliseconds = 5;
constexpr const char* workerProgram = "/Contents/Helpers/paperline-sane-worker";

bool holdsBundles(const std::string& folder) {
    const std::vector<std::string> entries = folderEntries(folder);
    return std::any_of(entries.begin(), entries.end(), [](const std::string& entry) {
        return pathExtension(entry) == "ds";
    });
}

} // namespace

void discoverSources(const std::function<void()>& aboutToWait) {
    const std::string worker = bundlePath() + workerProgram;
    if (!fileExists(worker))
        return;
    const std::string folder = userDataFolder() + "/TWAIN Data Sources";
    // The helper makes this folder at the end of a complete search, also when it found nothing.
    const bool searchedBefore = folderExists(folder);
    const bool knowsScanners = holdsBundles(folder);

    QProcess search;
    search.setProgram(QString::fromStdString(worker));
    search.setArguments({"--discover", QString::fromStdString(folder)});
    search.setStandardInputFile(QProcess::nullDevice());
    search.setStandardOutputFile(QProcess::nullDevice());
    search.setStandardErrorFile(QProcess::nullDevice());
    // Detached: what a slow search finds is there at the next start.
    qint64 searchProcess = 0;
    if (!search.startDetached(&searchProcess) || knowsScanners)
        return;
    aboutToWait();
    QDeadlineTimer deadline(searchedBefore ? longestLaterWaitMilliseconds
                                           : longestFirstWaitMilliseconds);
    while (processRuns(static_cast<pid_t>(searchProcess)) && !deadline.hasExpired())
        QThread::msleep(pollMilliseconds);
}

} // namespace paperline
