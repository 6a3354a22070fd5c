#include "base/CvOutputLog.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "platform/host/Utf.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <utility>

namespace paperline {

CvOutputLog* gOutputLog = nullptr;

namespace {

constexpr const char* switchFile = "/tmp/DrvLog/Debug.conf";
constexpr const char* logFileName = "CorvanePaperlineLog.txt";
constexpr int busyWaitMicroseconds = 10'000;
constexpr int busyWaitAttempts = 20;

struct FileCloser {
    void operator()(FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

// The folder is shared by all users: other users' files are neither read nor written.
std::optional<RegularFile> openTrusted(const std::string& path, int flags) {
    std::optional<RegularFile> file = openRegularFile(path, flags | O_NOFOLLOW);
    const bool isTrusted = file && (file->status.st_uid == geteuid() || file->status.st_uid == 0);
    return isTrusted ? std::move(file) : std::nullopt;
}

// A new log begins with a byte-order mark, in addition to that of its first entry.
std::optional<RegularFile> openLogAtEnd(const std::string& path) {
    if (!fileExists(path) && !writeFileAtomically(path, utf16WithMark("")))
        return std::nullopt;
    return openTrusted(path, O_WRONLY | O_APPEND);
}

std::string timeOfDay(double secondsSinceEpoch) {
    const double whole = std::floor(secondsSinceEpoch);
    const auto seconds = static_cast<time_t>(whole);
    const int milliseconds = static_cast<int>((secondsSinceEpoch - whole) * 1000.0);
    std::tm local{};
    localtime_r(&seconds, &local);
    std::array<char, 32> text{};
    std::snprintf(text.data(),
                  text.size(),
                  "%02d:%02d:%02d.%03d",
                  local.tm_hour,
                  local.tm_min,
                  local.tm_sec,
                  milliseconds);
    return text.data();
}

std::string markAndSubject(std::string_view marker, int32_t number, std::string_view subject) {
    std::string text(marker);
    text += ' ';
    text += std::to_string(number);
    text += ": ";
    text += subject;
    return text;
}

} // namespace

void CvOutputLog::setDebugLevelAndCreateLogFile() {
    debugLevel = 0;
    const std::string path = systemPlace(switchFile);
    std::optional<RegularFile> opened = openTrusted(path, O_RDONLY);
    const File file(opened ? fdopen(opened->descriptor.release(), "r") : nullptr);
    if (!file)
        return;

    std::array<char, 1024> line{};
    while (std::fgets(line.data(), static_cast<int>(line.size()), file.get()) != nullptr) {
        std::array<char, 256> key{};
        std::array<char, 256> value{};
        const int words = std::sscanf(line.data(), "%255s %255s", key.data(), value.data());
        if (words >= 1 && std::string_view(key.data()) == "DebugLevel")
            debugLevel = static_cast<int32_t>(std::strtol(value.data(), nullptr, 10));
    }

    if (debugLevel > 0) {
        debugFile = path;
        logPath = folderOfPath(path) + "/" + logFileName;
        logDir = folderOfPath(logPath);
    }
}

void CvOutputLog::writeNumberEntry(std::string_view subject,
                                   std::string_view functionStatus,
                                   int32_t functionReturn,
                                   int64_t data,
                                   uint32_t type) {
    // Only -1 in the low 32 bits means that there is no data; 0 is a value.
    const auto number = static_cast<int32_t>(data);
    if (type != 1 && number != -1)
        append(markAndSubject(functionStatus, functionReturn, subject) + " : " +
               std::to_string(number));
    else if (!functionStatus.empty())
        append(markAndSubject(functionStatus, functionReturn, subject));
    else
        append(std::string(subject));
}

void CvOutputLog::writeTextEntry(std::string_view subject,
                                 std::string_view functionStatus,
                                 int32_t functionReturn,
                                 std::string_view data,
                                 uint32_t type) {
    if (type != 1)
        return writeNumberEntry(subject, functionStatus, functionReturn, -1, type);
    append(markAndSubject(functionStatus, functionReturn, subject) + " : " + std::string(data));
}

void CvOutputLog::append(const std::string& entry) {
    // Entries of several threads may mix: after a bounded wait the entry is written all the same.
    for (int attempt = 0; logWritting && attempt < busyWaitAttempts; ++attempt)
        usleep(busyWaitMicroseconds);
    logWritting = true;

    if (debugLevel > 2)
        systemLog(entry);
    const std::vector<uint8_t> line =
        utf16WithMark(timeOfDay(host().secondsSinceEpoch()) + " ==> " + entry + "\n");
    // An entry that cannot be written is dropped: the log never reports an error.
    if (const std::optional<RegularFile> log = openLogAtEnd(logPath))
        (void)writeAll(log->descriptor.number(), line);
    logWritting = false;
}

} // namespace paperline
