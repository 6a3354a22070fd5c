// Process entry: the window, or one of the commands.
#include "app/CommandLine.h"
#include "app/ScanCommand.h"
#include "app/Version.h"
#include "app/WindowSession.h"
#include "controller/AppDelegate.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using namespace paperline;

int runCommand(const CommandLine& line, int argc, char** argv) {
    // The commands drive the same widgets without a display.
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const int results = takeStandardOutputForResults();
    QApplication application(argc, argv);
    std::string error;
    if (!chooseScratchRoot(ScratchKind::ownFolder, error)) {
        systemLog("paperline: " + error);
        return exitNotAllSaved;
    }
    int exitCode = exitUsage;
    if (line.command == Command::scan)
        exitCode = runScanCommand(line.scan, results);
    else if (line.command == Command::listSources)
        exitCode = runListSources(results);
    else
        exitCode = runListOptions(line.optionsOf, results);
    endScratch();
    return exitCode;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const CommandLine line = parseCommandLine(arguments);
    switch (line.command) {
    case Command::help:
        std::fputs(usageText, stdout);
        return 0;
    case Command::version:
        std::printf("paperline %s\n", versionText);
        return 0;
    case Command::usageError:
        std::fprintf(stderr, "paperline: %s\n\n%s", line.error.c_str(), usageText);
        return exitUsage;
    case Command::window:
        return runWindowSession(argc, argv, {});
    default:
        return runCommand(line, argc, argv);
    }
}
