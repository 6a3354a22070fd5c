// Tells whether a file on disk has changed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace paperline {

struct FileState {
    uint64_t device = 0;
    uint64_t file = 0;
    int64_t size = 0;
    int64_t seconds = 0; // modification time, which programs may set back
    int64_t nanoseconds = 0;
    int64_t stateSeconds = 0; // status-change time, which they cannot set
    int64_t stateNanoseconds = 0;
    bool operator==(const FileState&) const = default;
};

// Nothing when the path is no regular file.
std::optional<FileState> fileState(const std::string& path);

} // namespace paperline
