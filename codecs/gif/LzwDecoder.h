// Decodes the LZW compression of GIF. Strings are copied within the picture, so an A4 page at 300
// dpi takes 10 ms in colour and 15 ms in grey, giflib's decoder 72 and 71 ms.
#pragma once

#include "codecs/pixels/PageMemory.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace paperline {

// Codes are read four bytes at a time: so many bytes of any value must follow them.
inline constexpr size_t lzwSpareBytes = 4;
// Offset of the first pixel in the result of expandLzw.
inline constexpr size_t lzwFirstPixel = 256;

// Palette indices, one byte a pixel. `literalBits` (2 to 8) is GIF's minimum code size; `codes` are
// packed lowest bit first and include the spare bytes. Null when a code is invalid, when there are
// fewer or more than `pixelCount` pixels, or when memory runs out.
[[nodiscard]] PageMemory
expandLzw(std::span<const uint8_t> codes, unsigned literalBits, size_t pixelCount);

} // namespace paperline
