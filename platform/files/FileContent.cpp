#include "platform/files/FileContent.h"

#include "platform/files/Descriptor.h"
#include "platform/files/NewFile.h"
#include "platform/files/PathText.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace paperline {
namespace {

// Opened without waiting, so that a pipe under the name cannot hold the program.
Descriptor openRegularFile(const std::string& path, int extraFlags, struct stat& status) {
    Descriptor file = openFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | extraFlags);
    if (file.isOpen() && (::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)))
        return Descriptor();
    return file;
}

// Sticky and writable by all, as /tmp is: names in it may be laid out by strangers.
bool liesInSharedFolder(const std::string& path) {
    const std::string folder = folderOfPath(path);
    struct stat status = {};
    if (::stat(folder.empty() ? "." : folder.c_str(), &status) != 0)
        return false;
    return (status.st_mode & S_ISVTX) != 0 && (status.st_mode & S_IWOTH) != 0;
}

// A copy beside the target, put under its name when it is whole. `sync` makes it durable first.
bool copyContent(const std::string& from, const std::string& to, int openFlags, bool sync) {
    struct stat status = {};
    const Descriptor source = openRegularFile(from, openFlags, status);
    if (!source.isOpen())
        return false;
    NewFile target(to, status.st_mode & 0777);
    if (!target.isOpen() || !copyAll(source.number(), target.descriptor()))
        return false;
    if (sync && !syncFile(target.descriptor()))
        return false;
    return target.publish() == 0;
}

bool somethingIsThere(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0;
}

bool isRegularFile(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool moveContent(const std::string& from, const std::string& to, bool sync) {
    if (somethingIsThere(to))
        return false;
    struct stat status = {};
    // Bytes first, then the name: a crash must not leave an empty file where a whole one was told.
    const Descriptor source = sync ? openRegularFile(from, O_NOFOLLOW, status) : Descriptor();
    if (source.isOpen() && !syncFile(source.number()))
        return false;
    const int failure = renameWithoutReplacing(from, to);
    if (failure == EXDEV) {
        if (!copyContent(from, to, O_NOFOLLOW, sync))
            return false;
        if (::unlink(from.c_str()) != 0) {
            ::unlink(to.c_str());
            return false;
        }
    } else if (failure != 0) {
        return false;
    }
    if (sync)
        syncFolderOf(to);
    return true;
}

} // namespace

Descriptor openForWriting(const std::string& path) {
    const bool shared = liesInSharedFolder(path);
    const int flags = O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | (shared ? O_NOFOLLOW : 0);
    Descriptor file = openFile(path, flags, 0666);
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0)
        return Descriptor();
    if (shared && (status.st_uid != ::geteuid() || !S_ISREG(status.st_mode) || status.st_nlink > 1))
        return Descriptor();
    // Emptying even an empty file makes ext4 send the new content to the disk when it is closed,
    // and a scratch file that is removed before long need not go there.
    if (S_ISREG(status.st_mode) && status.st_size > 0 && ::ftruncate(file.number(), 0) != 0)
        return Descriptor();
    return file;
}

std::optional<std::vector<uint8_t>> readFile(const std::string& path, uint64_t maximumBytes) {
    struct stat status = {};
    const Descriptor file = openRegularFile(path, 0, status);
    if (!file.isOpen() || static_cast<uint64_t>(status.st_size) > maximumBytes)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    try {
        // One byte more than announced: the file may have grown, and /proc announces nothing.
        size_t capacity = static_cast<size_t>(status.st_size) + 1;
        for (size_t filled = 0;;) {
            bytes.resize(capacity);
            const ptrdiff_t count =
                readUpTo(file.number(), std::span<uint8_t>(bytes).subspan(filled));
            if (count < 0)
                return std::nullopt;
            filled += static_cast<size_t>(count);
            if (filled > maximumBytes)
                return std::nullopt;
            if (filled < capacity) {
                bytes.resize(filled);
                return bytes;
            }
            capacity += std::max<size_t>(capacity / 2, 4096);
        }
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

bool writeFile(const std::string& path, std::span<const uint8_t> bytes) {
    Descriptor file = openForWriting(path);
    if (!file.isOpen())
        return false;
    const bool written = writeAll(file.number(), bytes);
    return file.close() && written;
}

bool writeFileAtomically(const std::string& path, std::span<const uint8_t> bytes) {
    NewFile file(path, NewFile::Named{});
    if (!file.isOpen() || !writeAll(file.descriptor(), bytes))
        return false;
    // Who made the settings private keeps them so.
    struct stat status = {};
    if (::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode))
        (void)::fchmod(file.descriptor(), status.st_mode & 0777);
    if (!syncFile(file.descriptor()) || !file.replaceTarget())
        return false;
    syncFolderOf(path);
    return true;
}

CreateResult createFileWhole(const std::string& path, std::span<const uint8_t> bytes) {
    return createFileWhileFilling(path, bytes, [](size_t) {});
}

CreateResult createFileWhileFilling(const std::string& path,
                                    std::span<const uint8_t> bytes,
                                    const AwaitBytes& awaitBytes) {
    if (somethingIsThere(path))
        return CreateResult::alreadyThere;
    NewFile file(path);
    if (!file.isOpen())
        return CreateResult::notOpened;
    for (size_t begin = 0; begin < bytes.size(); begin += writePieceBytes) {
        const size_t end = std::min(bytes.size(), begin + writePieceBytes);
        awaitBytes(end);
        if (!writeAll(file.descriptor(), bytes.subspan(begin, end - begin)))
            return CreateResult::failed;
    }
    switch (file.publish()) {
    case 0:
        return CreateResult::created;
    case EEXIST:
        return CreateResult::alreadyThere;
    case ENAMETOOLONG: // the hidden name was short enough
        return CreateResult::notOpened;
    default:
        return CreateResult::failed;
    }
}

bool copyFile(const std::string& from, const std::string& to) {
    return !somethingIsThere(to) && copyContent(from, to, 0, false);
}

bool linkOrCopyFile(const std::string& from, const std::string& to) {
    return (isRegularFile(from) && ::link(from.c_str(), to.c_str()) == 0) || copyFile(from, to);
}

bool moveFile(const std::string& from, const std::string& to) {
    return moveContent(from, to, true);
}

bool moveScratchFile(const std::string& from, const std::string& to) {
    return moveContent(from, to, false);
}

} // namespace paperline
