#include "app/SourceDescription.h"

#include "app/CommandLine.h"
#include "platform/files/Descriptor.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

#include <QProcess>
#include <QString>

namespace paperline {
namespace {

constexpr const char* describeProgram = "/Contents/Helpers/paperline-describe-source";
constexpr int longestDescriptionMilliseconds = 60'000;

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
    const std::string description = describe.readAllStandardOutput().toStdString();
    return writeAll(resultDescriptor, description) ? exitSaved : exitNotAllSaved;
}

} // namespace paperline
