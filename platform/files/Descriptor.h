// File descriptors that close themselves; opening files, reading and writing through them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace paperline {

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { (void)close(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            (void)close();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    int release() { return std::exchange(number_, -1); } // the caller closes it
    // False when the system reports a late write error.
    bool close();

private:
    int number_ = -1;
};

// open(2) with O_CLOEXEC, repeated when a signal interrupts it. Sets errno on failure.
[[nodiscard]] Descriptor openFile(const std::string& path, int flags, unsigned mode = 0);

struct RegularFile {
    Descriptor descriptor;
    struct stat status;
};
// Opens a regular file that exists; nothing for folders, pipes and devices. Never blocks, as
// opening a pipe would. Add O_NOFOLLOW to the flags to refuse a symbolic link.
[[nodiscard]] std::optional<RegularFile> openRegularFile(const std::string& path,
                                                         int flags = O_RDONLY);

// The kernel looks for contiguous memory as large as the write. In a virtual machine whose memory
// was reclaimed by its host, larger writes are four times slower.
inline constexpr size_t writePieceBytes = 256 * 1024;

// These repeat short transfers and those that a signal interrupts, and set errno on failure.
[[nodiscard]] bool writeAll(int descriptor, std::span<const uint8_t> bytes);
[[nodiscard]] bool writeAll(int descriptor, std::string_view text);
[[nodiscard]] bool writeAllAt(int descriptor, uint64_t position, std::span<const uint8_t> bytes);
// The number of bytes read: fewer than asked for at the end of the file.
[[nodiscard]] std::optional<size_t> readUpTo(int descriptor, std::span<uint8_t> bytes);
// The same from a position. An error counts as the end of the file.
[[nodiscard]] size_t readAt(int descriptor, uint64_t position, std::span<uint8_t> bytes);
// Copies the rest of a file.
[[nodiscard]] bool copyAll(int from, int to);
[[nodiscard]] bool syncFile(int descriptor);

} // namespace paperline
