// Decodes the first image of GIF files: blocks are read by giflib, LZW is decoded here.
#pragma once

#include "codecs/gif/ColourPalette.h"
#include "codecs/pixels/PageMemory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace paperline {

struct GifPicture {
    int32_t screenWidth = 0, screenHeight = 0;
    int32_t left = 0, top = 0, width = 0, height = 0; // of the image within the screen
    bool isInterlaced = false;
    // White for the transparent index and for indices without a colour.
    std::array<PaletteColour, mostPaletteColours> colours{};
    PaletteColour behind; // of the screen outside the image
    PageMemory memory;

    bool isGrey() const;
    std::span<const uint8_t> row(int32_t y) const; // of the image, 0 at its top
};

// Nothing when the file is damaged, has more than `maximumPixels` (checked before memory is
// allocated), or when readers disagree on it: no palette, an image beyond its screen or on one far
// too large, interlaced with fewer than five rows, more or fewer pixels than declared.
[[nodiscard]] std::optional<GifPicture> decodeGif(std::span<const uint8_t> file,
                                                  uint64_t maximumPixels);

} // namespace paperline
