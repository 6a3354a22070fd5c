#include "app/SourceDescription.h"

#include "app/CommandLine.h"
#include "platform/files/Descriptor.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <span>

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
    const QByteArray lines = describe.readAllStandardOutput();
    const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(lines.constData()),
                                         static_cast<size_t>(lines.size()));
    return writeAll(resultDescriptor, bytes) ? exitSaved : exitNotAllSaved;
}

} // namespace paperline
