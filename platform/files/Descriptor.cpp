#include "platform/files/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace paperline {

bool Descriptor::close() {
    if (number_ < 0)
        return true;
    // After EINTR the descriptor is gone on Linux: closing again could hit another thread's file.
    const int result = ::close(std::exchange(number_, -1));
    return result == 0 || errno == EINTR;
}

Descriptor openFile(const std::string& path, int flags, unsigned mode) {
    int number = -1;
    do {
        number = ::open(path.c_str(), flags | O_CLOEXEC, mode);
    } while (number < 0 && errno == EINTR);
    return Descriptor(number);
}

bool writeAll(int descriptor, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            ::write(descriptor, bytes.data(), std::min(bytes.size(), writePieceBytes));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes = bytes.subspan(static_cast<size_t>(count));
    }
    return true;
}

ptrdiff_t readUpTo(int descriptor, std::span<uint8_t> bytes) {
    size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = ::read(descriptor, bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        filled += static_cast<size_t>(count);
    }
    return static_cast<ptrdiff_t>(filled);
}

bool copyAll(int from, int to) {
    std::array<uint8_t, 256 * 1024> buffer;
    for (;;) {
        const ptrdiff_t count = readUpTo(from, buffer);
        if (count < 0)
            return false;
        if (count == 0)
            return true;
        if (!writeAll(to, std::span(buffer).first(static_cast<size_t>(count))))
            return false;
    }
}

bool syncFile(int descriptor) {
    int result = 0;
    do {
        result = ::fsync(descriptor);
    } while (result != 0 && errno == EINTR);
    // Some file systems cannot sync a file; that is no loss of what was written.
    return result == 0 || errno == EINVAL || errno == EROFS || errno == ENOTSUP;
}

} // namespace paperline
