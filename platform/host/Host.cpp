#include "platform/host/Host.h"

#include "platform/files/FileContent.h"
#include "platform/files/PathText.h"
#include "platform/host/Environment.h"
#include "platform/host/LocaleNames.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <limits>
#include <pwd.h>
#include <string_view>
#include <sys/statvfs.h>
#include <unistd.h>

namespace paperline {
namespace {

struct Account {
    std::string name;
    std::string home;
};

Account accountOfUser() {
    std::array<char, 16 * 1024> buffer;
    passwd entry = {};
    passwd* found = nullptr;
    int failure = 0;
    do {
        failure = ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
    } while (failure == EINTR);
    if (found == nullptr)
        return {};
    return {entry.pw_name != nullptr ? entry.pw_name : "",
            entry.pw_dir != nullptr ? entry.pw_dir : ""};
}

double now() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(sinceEpoch).count();
}

// In a container the user may have no account.
std::string userName() {
    for (const std::string& name :
         {accountOfUser().name, environment("LOGNAME"), environment("USER")})
        if (!name.empty())
            return name;
    return std::to_string(::geteuid());
}

std::string userHome() {
    std::string home = environment("HOME");
    if (!home.starts_with('/'))
        home = accountOfUser().home;
    return home.starts_with('/') ? withoutTrailingSlashes(home) : "/";
}

LocaleEnvironment processLocale() {
    return {environment("LANGUAGE"),
            environment("LC_ALL"),
            environment("LC_MESSAGES"),
            environment("LANG")};
}

SystemVersion installedSystemVersion() {
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"})
        if (const auto text = readTextFile(path, 64 * 1024))
            return parseSystemVersion(*text);
    return {};
}

std::optional<uint64_t> availableMemory() {
    const std::string text = readTextFile("/proc/meminfo", 64 * 1024).value_or("");
    constexpr std::string_view label = "MemAvailable:";
    const size_t start = text.find(label);
    uint64_t kilobytes = 0;
    if (start == std::string::npos ||
        std::sscanf(text.c_str() + start + label.size(), " %" SCNu64, &kilobytes) != 1)
        return std::nullopt;
    return kilobytes * 1024;
}

std::optional<int64_t> freeSpace(const std::string& path) {
    struct statvfs status = {};
    int result = 0;
    do {
        result = ::statvfs(path.c_str(), &status);
    } while (result != 0 && errno == EINTR);
    if (result != 0)
        return std::nullopt;
    constexpr uint64_t most = std::numeric_limits<int64_t>::max();
    const uint64_t block = status.f_frsize != 0 ? status.f_frsize : status.f_bsize;
    if (block != 0 && status.f_bavail > most / block)
        return std::numeric_limits<int64_t>::max();
    return static_cast<int64_t>(status.f_bavail * block);
}

} // namespace

Host realHost() {
    Host host;
    host.secondsSinceEpoch = now;
    host.loginName = userName;
    host.homeFolder = userHome;
    host.localeIdentifier = [] { return localeIdentifierOf(processLocale()); };
    host.preferredLanguages = [] { return preferredLanguagesOf(processLocale()); };
    host.systemVersion = installedSystemVersion;
    host.availableMemoryBytes = availableMemory;
    host.freeSpaceBytes = freeSpace;
    return host;
}

Host& host() {
    static Host instance = realHost();
    return instance;
}

} // namespace paperline
