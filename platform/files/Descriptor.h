// A file descriptor that closes itself, and transfers that survive signals and short counts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
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

// open(2) with O_CLOEXEC, again when a signal interrupts it; errno tells why it is not open.
[[nodiscard]] Descriptor openFile(const std::string& path, int flags, unsigned mode = 0);

// A larger write makes the kernel look for large runs of free memory. On a virtual machine these
// are the ones that its host has taken back and has to give again, which is four times slower.
inline constexpr size_t writePieceBytes = 256 * 1024;

// All the bytes, in pieces, or false with errno set.
[[nodiscard]] bool writeAll(int descriptor, std::span<const uint8_t> bytes);
// Fills as much of `bytes` as the file holds; the count, or -1 with errno set.
[[nodiscard]] ptrdiff_t readUpTo(int descriptor, std::span<uint8_t> bytes);
// From the one to the other until the end of the file.
[[nodiscard]] bool copyAll(int from, int to);
[[nodiscard]] bool syncFile(int descriptor);

} // namespace paperline
