// Reads, writes, copies and moves whole files. Errors are values; nothing here throws. Paths are
// UTF-8.
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

// Opens for new content: created (0666 less umask) or emptied. In a folder shared with strangers
// (sticky and writable by all) a link or another user's file is refused.
[[nodiscard]] Descriptor openForWriting(const std::string& path);

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

} // namespace paperline
