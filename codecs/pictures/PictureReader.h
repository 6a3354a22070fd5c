// Reads a picture file as a page: PNM, PNG, JPEG and TIFF, told apart by content.
#pragma once

#include "codecs/jpeg/JpegCodec.h"
#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

enum class PictureFormat { none, pnm, png, jpeg, tiff };

// By the file's first bytes; none when it is no regular file or cannot be read.
PictureFormat pictureFormat(const std::string& path);

// Every page of the file as 1, 8 or 24 bits (one page unless it is a TIFF): 16-bit samples are
// reduced, palettes and alpha resolved on white, one-bit pages have 0 as black. Nothing when the
// file is no picture, is damaged, or is larger than `maximumPixels`.
[[nodiscard]] std::optional<DecodedImage>
readPicture(const std::string& path, int pageIndex, uint64_t maximumPixels);
[[nodiscard]] int picturePageCount(const std::string& path); // 0: no picture

} // namespace paperline
