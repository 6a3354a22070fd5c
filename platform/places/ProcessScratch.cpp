#include "platform/places/ProcessScratch.h"

#include "platform/files/Files.h"
#include "platform/files/PathText.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace paperline {
namespace {

constexpr const char* namePrefix = "paperline-";
constexpr const char* lockName = "lock";

// Locks the lock file of a private folder of this user. Not open when a process holds it.
Descriptor lockIn(const std::string& folderPath, int flags) {
    const Descriptor folder = openFile(folderPath, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    struct stat status = {};
    if (!folder.isOpen() || ::fstat(folder.number(), &status) != 0 ||
        status.st_uid != ::geteuid() || (status.st_mode & 0777) != 0700)
        return {};
    Descriptor lock(
        ::openat(folder.number(), lockName, O_RDWR | O_NOFOLLOW | O_CLOEXEC | flags, 0600));
    if (!lock.isOpen() || ::flock(lock.number(), LOCK_EX | LOCK_NB) != 0)
        return {};
    return lock;
}

} // namespace

std::optional<ProcessScratch> makeProcessScratch(const std::string& parent, std::string& error) {
    std::string folder = appendPathComponent(parent, std::string(namePrefix) + "XXXXXX");
    if (::mkdtemp(folder.data()) == nullptr) {
        error = "no scratch folder can be made in " + parent + ": " + std::strerror(errno);
        return std::nullopt;
    }
    Descriptor lock = lockIn(folder, O_CREAT | O_EXCL);
    if (!lock.isOpen()) {
        error = "the scratch folder " + folder + " cannot be locked: " + std::strerror(errno);
        removePath(folder);
        return std::nullopt;
    }
    return ProcessScratch{std::move(folder), std::move(lock)};
}

std::vector<ProcessScratch> takeAbandonedScratch(const std::string& parent) {
    std::vector<ProcessScratch> taken;
    for (const std::string& entry : folderEntries(parent)) {
        if (!entry.starts_with(namePrefix))
            continue;
        // A folder without a lock file is just being created.
        std::string folder = appendPathComponent(parent, entry);
        if (Descriptor lock = lockIn(folder, 0); lock.isOpen())
            taken.push_back({std::move(folder), std::move(lock)});
    }
    return taken;
}

} // namespace paperline
