// GIF files as pages: the first picture, read by giflib and expanded here.
#pragma once

#include "codecs/gif/ColourPalette.h"
#include "codecs/pixels/PageMemory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace paperline {

// A picture on its screen: what it leaves free shows the colour behind it, white where the picture
// is transparent somewhere.
struct GifPicture {
    int32_t screenWidth = 0, screenHeight = 0;
    int32_t left = 0, top = 0, width = 0, height = 0; // within the screen
    bool isInterlaced = false;
    // What a pixel means: white where it is transparent, or means nothing.
    std::array<PaletteColour, mostPaletteColours> colours{};
    PaletteColour behind;
    PageMemory memory;

    bool isGrey() const;
    std::span<const uint8_t> row(int32_t y) const; // of the picture, 0 at its top
};

// The file's first picture. Nothing when it is damaged, has more than `maximumPixels` (which is
// tested before memory is taken), or is one that readers make different things of: without any
// palette, beyond its screen, on a screen far too large, interlaced with fewer than five rows, or
// with more or fewer pixels than it says.
[[nodiscard]] std::optional<GifPicture> decodeGif(std::span<const uint8_t> file,
                                                  uint64_t maximumPixels);

} // namespace paperline
