#include "sources/worker/WorkerProgram.h"

#include "sources/framework/LocaleFreeText.h"
#include "sources/worker/OptionSettings.h"
#include "sources/worker/Protocol.h"
#include "sources/worker/WorkerServer.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace paperline::sources {

namespace {

// How long a device may take to stop after the data source has closed it.
constexpr std::chrono::seconds closingTime{8};

pid_t startedBy = 0;

// Kills this process and what its drivers have forked.
void endProcessGroup() {
    if (getpgrp() == getpid())
        kill(0, SIGKILL);
    _exit(3);
}

// The kernel sends the signal when the parent's starting thread ends; the parent may still run.
void endWithParent(int) {
    if (getppid() != startedBy)
        endProcessGroup();
}

void tieToParent() {
    startedBy = getppid();
    std::signal(SIGHUP, endWithParent);
    prctl(PR_SET_PDEATHSIG, SIGHUP);
    // Output of drivers to the terminal must not stop this background process group.
    std::signal(SIGTTOU, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

const char* kindName(OptionKind kind) {
    switch (kind) {
    case OptionKind::boolean:
        return "bool";
    case OptionKind::integer:
        return "int";
    case OptionKind::fixed:
        return "fixed";
    case OptionKind::button:
        return "button";
    case OptionKind::text:
        break;
    }
    return "string";
}

std::string allowedValues(const OptionDescriptor& option) {
    std::string text;
    if (option.hasRange) {
        text = numberText(option.minimum) + ".." + numberText(option.maximum);
        if (option.step > 0)
            text += " step " + numberText(option.step);
        return text;
    }
    for (const std::string& choice : option.choices)
        text += (text.empty() ? "" : "|") + choice;
    return text;
}

std::string oneField(std::string text) {
    for (char& character : text)
        if (static_cast<unsigned char>(character) < ' ')
            character = ' ';
    return text;
}

int describe(ScanDevice& device, const WorkerArguments& arguments, int output) {
    std::string error;
    ScanStatus status = device.open();
    if (status != ScanStatus::good)
        error = device.errorText();
    else
        status = applyOptionSettings(device, arguments.product, error);
    if (status != ScanStatus::good) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    std::string text;
    for (const OptionDescriptor& option : device.options()) {
        if (!option.active || !option.settable)
            continue;
        text += oneField(option.name) + '\t' + kindName(option.kind) + '\t';
        text += oneField(option.value) + '\t' + oneField(option.unit) + '\t';
        text += oneField(allowedValues(option)) + '\t' + oneField(option.title) + '\n';
    }
    return writeAll(output, text) ? 0 : 1;
}

} // namespace

int divertStandardOutput() {
    const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, workerSocketDescriptor + 1);
    std::fflush(stdout);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return output;
}

WorkerArguments parseWorkerArguments(int argc, const char* const* argv) {
    WorkerArguments arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        const char* const value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (word == "--serve") {
            arguments.mode = WorkerArguments::Mode::serve;
            continue;
        }
        if (value == nullptr)
            return {};
        ++i;
        if (word == "--describe") {
            arguments.mode = WorkerArguments::Mode::describe;
            arguments.device = value;
        } else if (word == "--device") {
            arguments.device = value;
        } else if (word == "--product") {
            arguments.product = value;
        } else {
            return {};
        }
    }
    return arguments;
}

int runWorker(ScanDevice& device, int argc, const char* const* argv) {
    const WorkerArguments arguments = parseWorkerArguments(argc, argv);
    switch (arguments.mode) {
    case WorkerArguments::Mode::describe:
        return describe(device, arguments, divertStandardOutput());
    case WorkerArguments::Mode::serve:
        break;
    case WorkerArguments::Mode::none:
        std::fputs("This program is started by a data source.\n", stderr);
        return 2;
    }
    tieToParent();
    // A driver's child process must not keep the socket open after this one's end.
    fcntl(workerSocketDescriptor, F_SETFD, FD_CLOEXEC);
    // Covers the device's destructor, too.
    const auto limitClosing = [] {
        std::thread([] {
            std::this_thread::sleep_for(closingTime);
            endProcessGroup();
        }).detach();
    };
    serveDevice(device, workerSocketDescriptor, arguments.product, limitClosing);
    return 0;
}

} // namespace paperline::sources
