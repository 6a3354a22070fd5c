// What tells one state of a file on disk from another.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace paperline {

struct FileState {
    uint64_t device = 0;
    uint64_t file = 0;
    int64_t size = 0;
    int64_t seconds = 0; // of the last change of its bytes, which programs may set back
    int64_t nanoseconds = 0;
    int64_t stateSeconds = 0; // of the last change of anything, which nobody sets
    int64_t stateNanoseconds = 0;
    bool operator==(const FileState&) const = default;
};

// Nothing when the path is no regular file.
std::optional<FileState> fileState(const std::string& path);

} // namespace paperline
