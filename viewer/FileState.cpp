#include "viewer/FileState.h"

#include <sys/stat.h>

namespace paperline {

std::optional<FileState> fileState(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return FileState{static_cast<uint64_t>(status.st_dev),
                     static_cast<uint64_t>(status.st_ino),
                     static_cast<int64_t>(status.st_size),
                     static_cast<int64_t>(status.st_mtim.tv_sec),
                     static_cast<int64_t>(status.st_mtim.tv_nsec),
                     static_cast<int64_t>(status.st_ctim.tv_sec),
                     static_cast<int64_t>(status.st_ctim.tv_nsec)};
}

} // namespace paperline
