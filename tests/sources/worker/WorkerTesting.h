// What tests of workers share: a scripted worker's client, and a look at what a process holds.
#pragma once

#include "sources/worker/WorkerClient.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <unistd.h>

namespace paperline::sources {

inline WorkerLaunch scriptedWorker(const std::string& script) {
    return {SCRIPTED_WORKER, script, ""};
}

// The numbers of the descriptors open in this process.
inline std::set<int> openDescriptors() {
    std::set<int> numbers;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const auto target = std::filesystem::read_symlink(entry.path(), error);
        if (target != "/proc/" + std::to_string(getpid()) + "/fd")
            numbers.insert(std::atoi(entry.path().filename().c_str()));
    }
    return numbers;
}

// Ids of the living processes of a process group; ones that only wait to be collected do not count.
inline std::set<pid_t> processesOfGroup(pid_t group) {
    std::set<pid_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        if (std::atoi(entry.path().filename().c_str()) <= 0)
            continue;
        std::ifstream file(entry.path() / "stat");
        const std::string text((std::istreambuf_iterator<char>(file)), {});
        const size_t nameEnd = text.rfind(')');
        if (nameEnd == std::string::npos)
            continue;
        char state = 0;
        int parent = 0, processGroup = 0;
        if (std::sscanf(text.c_str() + nameEnd + 1, " %c %d %d", &state, &parent, &processGroup) ==
                3 &&
            processGroup == group && state != 'Z' && state != 'X')
            found.insert(std::atoi(entry.path().filename().c_str()));
    }
    return found;
}

// An environment variable for the length of a scope.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::string& value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            had_ = true;
            before_ = before;
        }
        setenv(name, value.c_str(), 1);
    }
    ~ScopedVariable() {
        if (had_)
            setenv(name_, before_.c_str(), 1);
        else
            unsetenv(name_);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* name_;
    bool had_ = false;
    std::string before_;
};

} // namespace paperline::sources
