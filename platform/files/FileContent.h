// Reads, writes, copies and moves files. Nothing throws; what writes, creates or moves a file sets
// errno when it fails. Paths are UTF-8.
#pragma once

#include "platform/files/Descriptor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline {

// The content of a regular file; nothing when it cannot be read or has more than `maximumBytes`.
std::optional<std::vector<uint8_t>> readFile(const std::string& path,
                                             uint64_t maximumBytes = UINT64_MAX);
std::optional<std::string> readTextFile(const std::string& path, uint64_t maximumBytes);

// Opens a file for new content: created with mode 0666 less umask, or emptied. In a folder shared
// by several users (sticky and writable by all) links and other users' files are refused.
[[nodiscard]] Descriptor openForWriting(const std::string& path);
// Replaces the content of a file opened like that. On failure it may be cut off.
[[nodiscard]] bool writeFile(const std::string& path, std::span<const uint8_t> bytes);

// Creates the file, or replaces it by one of the same permissions: readers see the old content or
// all of the new. Synced to the disk.
[[nodiscard]] bool writeFileAtomically(const std::string& path, std::span<const uint8_t> bytes);

enum class CreateResult {
    created,
    alreadyThere,
    notOpened, // no file can be created there: missing or read-only folder, name too long
    failed,    // the content could not be written; no file is left
};
// Returns when all bytes before `end` are filled in.
using AwaitBytes = std::function<void(size_t end)>;
// Creates a file that appears with all its content and never replaces another. Not synced: scanning
// must not wait for the disk. With `awaitBytes` the bytes may still be filled in meanwhile.
[[nodiscard]] CreateResult createFileWhole(const std::string& path,
                                           std::span<const uint8_t> bytes,
                                           const AwaitBytes& awaitBytes = {});

// Copies a regular file with its permissions; never replaces a file.
[[nodiscard]] bool copyFile(const std::string& from, const std::string& to);
// Creates a hard link, or a copy where the file system has no links or is another one. For files
// that are replaced or removed but never modified.
[[nodiscard]] bool linkOrCopyFile(const std::string& from, const std::string& to);
// Moves a file and syncs it; never replaces a file. Between file systems regular files are copied,
// folders and links are not moved.
[[nodiscard]] bool moveFile(const std::string& from, const std::string& to);
// The same without syncing, for scratch files.
[[nodiscard]] bool moveScratchFile(const std::string& from, const std::string& to);

} // namespace paperline
