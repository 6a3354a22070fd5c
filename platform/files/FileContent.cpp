#include "platform/files/FileContent.h"

#include "platform/files/Files.h"
#include "platform/files/NewFile.h"
#include "platform/files/PathText.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <unistd.h>

namespace paperline {
namespace {

// Sticky and writable by all, as /tmp is.
bool liesInSharedFolder(const std::string& path) {
    const std::string folder = folderOfPath(path);
    struct stat status = {};
    if (::stat(folder.empty() ? "." : folder.c_str(), &status) != 0)
        return false;
    return (status.st_mode & S_ISVTX) != 0 && (status.st_mode & S_IWOTH) != 0;
}

bool copyContent(const std::string& from, const std::string& to, int openFlags, bool sync) {
    const std::optional<RegularFile> source = openRegularFile(from, openFlags);
    if (!source)
        return false;
    NewFile target(to, source->status.st_mode & 0777);
    if (!target.isOpen() || !copyAll(source->descriptor.number(), target.descriptor()))
        return false;
    if (sync && !syncFile(target.descriptor()))
        return false;
    errno = target.publish();
    return errno == 0;
}

template <typename Bytes>
std::optional<Bytes> readContent(const std::string& path, uint64_t maximumBytes) {
    const std::optional<RegularFile> file = openRegularFile(path);
    if (!file || static_cast<uint64_t>(file->status.st_size) > maximumBytes)
        return std::nullopt;
    Bytes bytes;
    try {
        // One byte more than the size: the file may have grown, and files in /proc have size 0.
        size_t capacity = static_cast<size_t>(file->status.st_size) + 1;
        for (size_t filled = 0;;) {
            bytes.resize(capacity);
            auto* target = reinterpret_cast<uint8_t*>(bytes.data());
            const std::optional<size_t> count =
                readUpTo(file->descriptor.number(), {target + filled, capacity - filled});
            if (!count || filled + *count > maximumBytes)
                return std::nullopt;
            filled += *count;
            if (filled < capacity) {
                bytes.resize(filled);
                return bytes;
            }
            capacity += std::max<size_t>(capacity / 2, 4096);
        }
    } catch (const std::exception&) { // no memory, or a size that no container can have
        return std::nullopt;
    }
}

bool moveContent(const std::string& from, const std::string& to, bool sync) {
    if (statusOf(to)) {
        errno = EEXIST;
        return false;
    }
    // Sync the bytes before the name: a crash must not leave an empty file under it.
    if (sync) {
        const std::optional<RegularFile> source = openRegularFile(from, O_RDONLY | O_NOFOLLOW);
        if (source && !syncFile(source->descriptor.number()))
            return false;
    }
    const int failure = renameWithoutReplacing(from, to);
    if (failure == EXDEV) {
        if (!copyContent(from, to, O_RDONLY | O_NOFOLLOW, sync))
            return false;
        if (::unlink(from.c_str()) != 0) {
            ::unlink(to.c_str());
            return false;
        }
    } else if (failure != 0) {
        errno = failure;
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
    if (shared &&
        (status.st_uid != ::geteuid() || !S_ISREG(status.st_mode) || status.st_nlink > 1)) {
        errno = EPERM;
        return Descriptor();
    }
    // After truncation ext4 flushes the new content on close, even if the file was empty. Scratch
    // files, which are removed soon, need not reach the disk.
    if (S_ISREG(status.st_mode) && status.st_size > 0 && ::ftruncate(file.number(), 0) != 0)
        return Descriptor();
    return file;
}

std::optional<std::vector<uint8_t>> readFile(const std::string& path, uint64_t maximumBytes) {
    return readContent<std::vector<uint8_t>>(path, maximumBytes);
}

std::optional<std::string> readTextFile(const std::string& path, uint64_t maximumBytes) {
    return readContent<std::string>(path, maximumBytes);
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
    // An existing file keeps its permissions.
    if (const auto status = statusOf(path); status && S_ISREG(status->st_mode))
        (void)::fchmod(file.descriptor(), status->st_mode & 0777);
    if (!syncFile(file.descriptor()) || !file.replaceTarget())
        return false;
    syncFolderOf(path);
    return true;
}

CreateResult createFileWhole(const std::string& path,
                             std::span<const uint8_t> bytes,
                             const AwaitBytes& awaitBytes) {
    if (statusOf(path))
        return CreateResult::alreadyThere;
    NewFile file(path);
    if (!file.isOpen())
        return CreateResult::notOpened;
    for (size_t begin = 0; begin < bytes.size(); begin += writePieceBytes) {
        const size_t end = std::min(bytes.size(), begin + writePieceBytes);
        if (awaitBytes)
            awaitBytes(end);
        if (!writeAll(file.descriptor(), bytes.subspan(begin, end - begin)))
            return CreateResult::failed;
    }
    errno = file.publish();
    switch (errno) {
    case 0:
        return CreateResult::created;
    case EEXIST:
        return CreateResult::alreadyThere;
    case ENAMETOOLONG: // seen only now, as the hidden name is shorter
        return CreateResult::notOpened;
    default:
        return CreateResult::failed;
    }
}

bool copyFile(const std::string& from, const std::string& to) {
    return !statusOf(to) && copyContent(from, to, O_RDONLY, false);
}

bool linkOrCopyFile(const std::string& from, const std::string& to) {
    const std::optional<struct stat> status = statusOf(from);
    const bool isLinked =
        status && S_ISREG(status->st_mode) && ::link(from.c_str(), to.c_str()) == 0;
    return isLinked || copyFile(from, to);
}

bool moveFile(const std::string& from, const std::string& to) {
    return moveContent(from, to, true);
}

bool moveScratchFile(const std::string& from, const std::string& to) {
    return moveContent(from, to, false);
}

} // namespace paperline
