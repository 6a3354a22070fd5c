#include "platform/files/NewFile.h"

#include "platform/files/Files.h"
#include "platform/files/PathText.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace paperline {
namespace {

std::string folderOrCurrent(const std::string& path) {
    const std::string folder = folderOfPath(path);
    return folder.empty() ? "." : folder;
}

// Unique within the process; O_EXCL prevents collisions with others.
std::string hiddenName(const std::string& target, unsigned attempt) {
    static std::atomic<unsigned> counter{0};
    return appendPathComponent(folderOrCurrent(target),
                               ".paperline-" + std::to_string(::getpid()) + "-" +
                                   std::to_string(counter++) + "-" + std::to_string(attempt));
}

// For file systems without hard links and without exclusive renaming: an empty file reserves the
// name and is then replaced.
int renameOverOwnEmptyFile(const std::string& from, const std::string& to) {
    Descriptor emptyFile = openFile(to, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (!emptyFile.isOpen())
        return errno;
    if (::rename(from.c_str(), to.c_str()) == 0)
        return 0;
    const int failure = errno;
    ::unlink(to.c_str());
    return failure;
}

} // namespace

int renameWithoutReplacing(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP)
        return errno;
    if (const auto status = statusOf(from); status && S_ISDIR(status->st_mode))
        return ENOTSUP;
    if (::link(from.c_str(), to.c_str()) == 0) {
        if (::unlink(from.c_str()) == 0)
            return 0;
        const int failure = errno;
        ::unlink(to.c_str());
        return failure;
    }
    if (errno != EPERM && errno != ENOTSUP && errno != ENOSYS && errno != EMLINK)
        return errno;
    return renameOverOwnEmptyFile(from, to);
}

void syncFolderOf(const std::string& path) {
    const Descriptor folder = openFile(folderOrCurrent(path), O_RDONLY | O_DIRECTORY);
    if (folder.isOpen())
        (void)syncFile(folder.number());
}

NewFile::NewFile(const std::string& targetPath, unsigned mode) : target_(targetPath) {
    file_ = openFile(folderOrCurrent(target_), O_RDWR | O_TMPFILE, mode);
    if (!file_.isOpen())
        openNamed(mode);
}

NewFile::NewFile(const std::string& targetPath, Named, unsigned mode) : target_(targetPath) {
    openNamed(mode);
}

void NewFile::openNamed(unsigned mode) {
    for (unsigned attempt = 0; attempt < 100 && !file_.isOpen(); ++attempt) {
        hiddenPath_ = hiddenName(target_, attempt);
        file_ = openFile(hiddenPath_, O_RDWR | O_CREAT | O_EXCL, mode);
        if (!file_.isOpen() && errno != EEXIST)
            break;
    }
    if (!file_.isOpen())
        hiddenPath_.clear();
}

NewFile::~NewFile() {
    const int failure = errno; // of the write that failed
    if (!hiddenPath_.empty())
        ::unlink(hiddenPath_.c_str());
    errno = failure;
}

int NewFile::publish() {
    if (!hiddenPath_.empty()) {
        // Closing reports late write errors (network, quota); the name is still hidden.
        if (!file_.close())
            return EIO;
        const int failure = renameWithoutReplacing(hiddenPath_, target_);
        if (failure == 0)
            hiddenPath_.clear();
        return failure;
    }
    const std::string handle = "/proc/self/fd/" + std::to_string(file_.number());
    if (::linkat(AT_FDCWD, handle.c_str(), AT_FDCWD, target_.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return errno;
    if (file_.close())
        return 0;
    ::unlink(target_.c_str());
    return EIO;
}

bool NewFile::replaceTarget() {
    if (hiddenPath_.empty() || !file_.close())
        return false;
    if (::rename(hiddenPath_.c_str(), target_.c_str()) != 0)
        return false;
    hiddenPath_.clear();
    return true;
}

} // namespace paperline
