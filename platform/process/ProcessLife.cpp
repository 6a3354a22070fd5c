#include "platform/process/ProcessLife.h"

#include "platform/files/FileContent.h"

#include <cerrno>
#include <csignal>
#include <string>

namespace paperline {

bool processRuns(pid_t process) {
    if (::kill(process, 0) != 0 && errno != EPERM)
        return false;
    constexpr uint64_t mostBytes = 4096;
    const auto line = readTextFile("/proc/" + std::to_string(process) + "/stat", mostBytes);
    if (!line)
        return ::kill(process, 0) == 0 || errno == EPERM;
    // "number (name) state ...". Only the name may contain parentheses.
    const size_t nameEnd = line->rfind(") ");
    return nameEnd == std::string::npos || line->find_first_of("ZX", nameEnd) != nameEnd + 2;
}

} // namespace paperline
