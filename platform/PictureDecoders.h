// One decoder per kind of picture file, for PictureReader.
#pragma once

#include "platform/JpegCodec.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace paperline {

// All of them: nothing when the file is damaged or has more than `maximumPixels`, which is tested
// before memory is taken for them.
[[nodiscard]] std::optional<DecodedImage> decodePnm(std::span<const uint8_t> bytes,
                                                    uint64_t maximumPixels);
[[nodiscard]] std::optional<DecodedImage> decodePng(std::span<const uint8_t> bytes,
                                                    uint64_t maximumPixels);
[[nodiscard]] std::optional<DecodedImage>
decodeTiffPage(const std::string& path, int pageIndex, uint64_t maximumPixels);

// Whether the header is whole and names a size.
bool hasPnmHeader(std::span<const uint8_t> bytes);
bool hasPngHeader(std::span<const uint8_t> bytes);
int tiffPageCount(const std::string& path); // 0: no TIFF

bool withinPixels(uint64_t widthPixels, uint64_t heightPixels, uint64_t maximumPixels);

} // namespace paperline
