// Files and folders. Errors are values; nothing here throws. Paths are UTF-8.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline {

bool fileExists(const std::string& path); // a file or a folder; a dangling link does not exist
bool folderExists(const std::string& path);
bool isWritable(const std::string& path); // this user may write it (folder: may add entries)

[[nodiscard]] bool createFolder(const std::string& path); // one level, mode 0777 less umask
[[nodiscard]] bool
createFolderWithParents(const std::string& path); // true when it is there afterwards
// A scratch folder: mode 0700, made here or already this user's own; never through a link.
[[nodiscard]] bool createPrivateFolder(const std::string& path);

// True for a file or folder (not a link) that belongs to this user or to root.
bool ownedByUserOrRoot(const std::string& path);

// Removes a file, a link (never what it points to) or a folder with all it holds. True when
// nothing is there afterwards.
bool removePath(const std::string& path);

// Copies the bytes of a regular file and its permissions; the target must not exist.
[[nodiscard]] bool copyFile(const std::string& from, const std::string& to);
// Gives a regular file a second name; where that cannot be done (another file system, or one
// without links) it is copied as above. For files that are replaced or removed, never changed in
// place.
[[nodiscard]] bool linkOrCopyFile(const std::string& from, const std::string& to);
// Moves within or across file systems without ever replacing an existing target: synced, and across
// file systems copied beside the target, then put under its name. A folder or a link moves only
// within its file system.
[[nodiscard]] bool moveFile(const std::string& from, const std::string& to);
// The same for what ends with the process: not synced, so that it need not reach the disk.
[[nodiscard]] bool moveScratchFile(const std::string& from, const std::string& to);

// Names below the folder: one level, or every file and folder at any depth as relative paths, in
// the order the file system gives. Not followed through links. Empty when it cannot be read.
std::vector<std::string> folderEntries(const std::string& folder);
std::vector<std::string> deepFolderEntries(const std::string& folder);

// The file's bytes; nothing when it cannot be read or is larger than `maximumBytes`.
std::optional<std::vector<uint8_t>> readFile(const std::string& path,
                                             uint64_t maximumBytes = UINT64_MAX);

// Replaces the file's content (created with mode 0666 less umask), not atomically. False on any
// error, short write and failed close included. In a folder shared with strangers (sticky and
// writable by all) a link or another user's file is refused.
[[nodiscard]] bool writeFile(const std::string& path, std::span<const uint8_t> bytes);

// Writes beside and renames over the file: readers see the old bytes or all the new ones.
[[nodiscard]] bool writeFileAtomically(const std::string& path, std::span<const uint8_t> bytes);

// Like writeFile, but the name appears only with the whole content, and never over another file.
// Not synced: page after page must not wait for the disk.
enum class CreateResult {
    created,
    alreadyThere,
    notOpened, // no file could be made there: folder missing, read-only, name too long
    failed,    // the content could not be written whole; nothing is left behind
};
[[nodiscard]] CreateResult createFileWhole(const std::string& path, std::span<const uint8_t> bytes);

// The same for bytes that are still being made: `awaitBytes` returns when all before `end` are
// there.
using AwaitBytes = std::function<void(size_t end)>;
[[nodiscard]] CreateResult createFileWhileFilling(const std::string& path,
                                                  std::span<const uint8_t> bytes,
                                                  const AwaitBytes& awaitBytes);

// Path text, without looking at the disk.
std::string lastPathComponent(const std::string& path); // "/a/b/" gives "b"; "/" gives "/"
std::string folderOfPath(const std::string& path);      // "/a/b" gives "/a"; "a" gives ""
std::string appendPathComponent(const std::string& path,
                                const std::string& component); // one "/" between
std::string pathExtension(const std::string& path); // "ds" of "x.ds"; "" when there is none
std::string withoutPathExtension(const std::string& path);

} // namespace paperline
