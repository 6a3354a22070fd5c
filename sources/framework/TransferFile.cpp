#include "sources/framework/TransferFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace paperline::sources {

namespace {

bool writeAll(int descriptor, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes = bytes.subspan(static_cast<size_t>(count));
    }
    return true;
}

} // namespace

bool writePageFile(const std::string& path,
                   std::span<const uint8_t> header,
                   std::span<const uint8_t> pixels) {
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return false;
    const bool written = writeAll(descriptor, header) && writeAll(descriptor, pixels);
    return close(descriptor) == 0 && written;
}

} // namespace paperline::sources
