// Reads the LZW streams that LzwEncoder writes.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace paperline {

// Serves one strip after another. Some 32 KB: not for the stack.
class LzwDecoder {
public:
    // Fills the target, of less than 4 GB, with what the stream stands for. False when the stream
    // is damaged, of another kind or too short; the target's content is undefined then. What it
    // says beyond the target's end is left.
    [[nodiscard]] bool decode(std::span<const uint8_t> stream, std::span<uint8_t> target);

private:
    // A string stands in what has been read: the one before, and the byte behind it.
    struct String {
        uint32_t start = 0;
        uint32_t length = 0;
    };
    std::array<String, 4096> strings_{};
};

} // namespace paperline
