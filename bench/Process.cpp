#include "bench/Process.h"

#include <chrono>
#include <cstdlib>
#include <fstream>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace paperline::bench {

namespace {

// A shell is small; a copy of this process, pages and all, is not. posix_spawn copies nothing.
pid_t start(const std::vector<std::string>& command,
            const std::string& outputFile,
            const std::string& errorFile) {
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const std::string output = outputFile.empty() ? "/dev/null" : outputFile;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(
        &actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (!errorFile.empty())
        posix_spawn_file_actions_addopen(
            &actions, STDERR_FILENO, errorFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = -1;
    const int failure =
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failure == 0 ? child : -1;
}

} // namespace

double millisecondsNow() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

ProcessResult runProcess(const std::vector<std::string>& command,
                         const std::string& outputFile,
                         const std::string& errorFile) {
    const double begin = millisecondsNow();
    const pid_t child = start(command, outputFile, errorFile);
    if (child < 0)
        return {};
    int status = 0;
    if (waitpid(child, &status, 0) != child)
        return {};
    return {WIFEXITED(status) && WEXITSTATUS(status) == 0, millisecondsNow() - begin};
}

WorkResult runWork(const std::vector<std::string>& words, const std::string& folder) {
    const std::string report = folder + "/work-report";
    std::vector<std::string> command{"/proc/self/exe", "--work"};
    command.insert(command.end(), words.begin(), words.end());
    WorkResult result{runProcess(command, report), 0};
    std::ifstream(report) >> result.peakKilobytes;
    return result;
}

int64_t ownPeakKilobytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return std::atoll(line.c_str() + 6);
    return 0;
}

} // namespace paperline::bench
