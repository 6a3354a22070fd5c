#include "app/SourceDescription.h"

#include "app/CommandLine.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <unistd.h>

namespace paperline {
namespace {

constexpr const char* describeProgram = "/Contents/Helpers/paperline-describe-source";
constexpr int longestDescriptionMilliseconds = 60'000;

bool writeAll(int descriptor, const QByteArray& bytes) {
    for (qsizetype done = 0; done < bytes.size();) {
        const ssize_t written =
            write(descriptor, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

} // namespace

int describeSource(const std::string& sourceBundle, int resultDescriptor) {
    QProcess describe;
    describe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    describe.start(QString::fromStdString(bundlePath() + describeProgram),
                   {QString::fromStdString(sourceBundle)});
    if (!describe.waitForStarted()) {
        systemLog("paperline: " + bundlePath() + describeProgram + " cannot be started");
        return exitSourceNotOpened;
    }
    if (!describe.waitForFinished(longestDescriptionMilliseconds)) {
        describe.kill();
        describe.waitForFinished();
        systemLog("paperline: the source does not answer");
        return exitSourceHung;
    }
    if (describe.exitStatus() != QProcess::NormalExit || describe.exitCode() != 0)
        return exitSourceNotOpened;
    return writeAll(resultDescriptor, describe.readAllStandardOutput()) ? exitSaved
                                                                        : exitNotAllSaved;
}

} // namespace paperline
