#include "platform/files/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <unistd.h>

namespace paperline {
namespace {

struct Transfer {
    size_t count = 0;
    bool failed = false;
};

// Calls move(done, left) until `count` bytes are moved, it fails or it moves none.
template <typename Move> Transfer transfer(size_t count, const Move& move) {
    Transfer result;
    while (result.count < count) {
        const ssize_t moved = move(result.count, count - result.count);
        if (moved < 0 && errno == EINTR)
            continue;
        result.failed = moved < 0;
        if (moved <= 0)
            break;
        result.count += static_cast<size_t>(moved);
    }
    return result;
}

} // namespace

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

std::optional<RegularFile> openRegularFile(const std::string& path, int flags) {
    RegularFile file{openFile(path, flags | O_NONBLOCK | O_NOCTTY), {}};
    if (!file.descriptor.isOpen() || ::fstat(file.descriptor.number(), &file.status) != 0 ||
        !S_ISREG(file.status.st_mode))
        return std::nullopt;
    return file;
}

bool writeAll(int descriptor, std::span<const uint8_t> bytes) {
    const Transfer written = transfer(bytes.size(), [&](size_t done, size_t left) {
        return ::write(descriptor, &bytes[done], std::min(left, writePieceBytes));
    });
    return written.count == bytes.size();
}

bool writeAll(int descriptor, std::string_view text) {
    return writeAll(descriptor, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

bool writeAllAt(int descriptor, uint64_t position, std::span<const uint8_t> bytes) {
    const Transfer written = transfer(bytes.size(), [&](size_t done, size_t left) {
        const auto place = static_cast<off_t>(position + done);
        return ::pwrite(descriptor, &bytes[done], std::min(left, writePieceBytes), place);
    });
    return written.count == bytes.size();
}

std::optional<size_t> readUpTo(int descriptor, std::span<uint8_t> bytes) {
    const Transfer read = transfer(bytes.size(), [&](size_t done, size_t left) {
        return ::read(descriptor, &bytes[done], left);
    });
    return read.failed ? std::nullopt : std::optional(read.count);
}

size_t readAt(int descriptor, uint64_t position, std::span<uint8_t> bytes) {
    const Transfer read = transfer(bytes.size(), [&](size_t done, size_t left) -> ssize_t {
        if (position > static_cast<uint64_t>(INT64_MAX) - done)
            return 0;
        return ::pread(descriptor, &bytes[done], left, static_cast<off_t>(position + done));
    });
    return read.count;
}

bool copyAll(int from, int to) {
    std::array<uint8_t, 256 * 1024> buffer;
    for (;;) {
        const std::optional<size_t> count = readUpTo(from, buffer);
        if (!count || *count == 0)
            return count.has_value();
        if (!writeAll(to, std::span(buffer).first(*count)))
            return false;
    }
}

bool syncFile(int descriptor) {
    int result = 0;
    do {
        result = ::fsync(descriptor);
    } while (result != 0 && errno == EINTR);
    // Some file systems cannot sync a file; the written bytes are safe all the same.
    return result == 0 || errno == EINVAL || errno == EROFS || errno == ENOTSUP;
}

} // namespace paperline
