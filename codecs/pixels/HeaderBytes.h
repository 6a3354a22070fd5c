// Bytes of a picture file at any offset, without reading the file whole.
#pragma once

#include "platform/files/Descriptor.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace paperline {

class HeaderBytes {
public:
    // False: no regular file that can be read.
    [[nodiscard]] bool open(const std::string& path);

    // Offsets count from `start` from now on and end after `length` bytes.
    void narrowTo(uint64_t start, uint64_t length);

    uint64_t size() const { return length_; }
    // False when the range leaves the window or the file has become shorter.
    [[nodiscard]] bool read(uint64_t offset, std::span<uint8_t> target);

    std::optional<uint8_t> byteAt(uint64_t offset);
    std::optional<uint16_t> numberAt16(uint64_t offset, bool bigEndian);
    std::optional<uint32_t> numberAt32(uint64_t offset, bool bigEndian);

private:
    Descriptor file_;
    uint64_t start_ = 0;
    uint64_t length_ = 0;
    uint64_t cachedFrom_ = 0; // of the file, not of the window
    size_t cachedCount_ = 0;
    std::array<uint8_t, 1024> cache_{};
};

uint16_t numberFrom16(std::span<const uint8_t> bytes, bool bigEndian);
uint32_t numberFrom32(std::span<const uint8_t> bytes, bool bigEndian);

} // namespace paperline
