// PNM files: PBM, PGM and PPM, in figures or in bytes.
#pragma once

#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <optional>
#include <span>

namespace paperline {

// Nothing when the file is damaged or has more than `maximumPixels`, which is tested before memory
// is taken for them.
[[nodiscard]] std::optional<DecodedImage> decodePnm(std::span<const uint8_t> bytes,
                                                    uint64_t maximumPixels);
bool hasPnmHeader(std::span<const uint8_t> bytes); // the header is whole and names a size

} // namespace paperline
