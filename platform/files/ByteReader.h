// Bytes and integers at any offset of a file or of memory, for readers of headers.
#pragma once

#include "platform/files/ByteOrder.h"
#include "platform/files/FilePieces.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace paperline {

// What lies outside the file is absent, not an error.
class ByteReader {
public:
    // A regular file; no bytes when it cannot be read.
    explicit ByteReader(const std::string& path);
    explicit ByteReader(std::span<const uint8_t> memory) : held_(memory) {} // borrowed

    // `count` bytes (at least 1) from `offset` on, valid until the next call; empty unless all
    // exist.
    std::span<const uint8_t> bytes(uint64_t offset, size_t count);
    bool hasText(uint64_t offset, std::string_view text);

    template <std::unsigned_integral Number>
    std::optional<Number> number(uint64_t offset, std::endian order) {
        const std::span<const uint8_t> found = bytes(offset, sizeof(Number));
        return found.empty() ? std::nullopt : std::optional(readInteger<Number>(found, order));
    }
    std::optional<uint8_t> byte(uint64_t offset) {
        return number<uint8_t>(offset, std::endian::native);
    }

private:
    std::optional<FilePieces> file_;
    std::vector<uint8_t> buffer_;
    uint64_t heldFrom_ = 0;
    std::span<const uint8_t> held_; // from offset `heldFrom_` on
};

} // namespace paperline
