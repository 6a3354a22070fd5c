#include "app/SourceDiscovery.h"

#include "platform/Files.h"
#include "platform/Places.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QThread>

#include <cerrno>
#include <csignal>

namespace paperline {
namespace {

constexpr int longestWaitMilliseconds = 5000;
constexpr unsigned long pollMilliseconds = 20;
constexpr const char* workerProgram = "/Contents/Helpers/paperline-sane-worker";

// The search is nobody's child, so its number is free once it has ended.
bool isRunning(qint64 process) {
    return kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
}

} // namespace

void discoverSources(const std::function<void()>& aboutToWait) {
    const std::string worker = bundlePath() + workerProgram;
    if (!fileExists(worker))
        return;
    const std::string folder = userDataFolder() + "/TWAIN Data Sources";
    // The helper makes this folder, filled, when a whole search has ended, with scanners or without.
    const bool searchedBefore = folderExists(folder);

    QProcess search;
    search.setProgram(QString::fromStdString(worker));
    search.setArguments({"--discover", QString::fromStdString(folder)});
    search.setStandardInputFile(QProcess::nullDevice());
    search.setStandardOutputFile(QProcess::nullDevice());
    search.setStandardErrorFile(QProcess::nullDevice());
    // Detached: a slow search goes on and serves the next start.
    qint64 searchProcess = 0;
    if (!search.startDetached(&searchProcess) || searchedBefore)
        return;
    aboutToWait();
    QDeadlineTimer deadline(longestWaitMilliseconds);
    while (isRunning(searchProcess) && !deadline.hasExpired())
        QThread::msleep(pollMilliseconds);
}

} // namespace paperline
