// The compression of GIF, undone.
#pragma once

#include "codecs/pixels/PageMemory.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace paperline {

// Codes are read in pieces: so many bytes of any value follow them.
inline constexpr size_t lzwSpareBytes = 4;
// Where the pixels begin in the memory that expandLzw gives.
inline constexpr size_t lzwFirstPixel = 256;

// The pixels, a byte each, that codes of GIF stand for: `literalBits` (2 to 8) to begin with,
// packed from the low bits on. `codes` includes the spare bytes. Nothing when a code means nothing,
// when they stand for fewer or more than `pixelCount` pixels, and when memory runs out.
[[nodiscard]] PageMemory
expandLzw(std::span<const uint8_t> codes, unsigned literalBits, size_t pixelCount);

} // namespace paperline
