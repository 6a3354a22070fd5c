// The size and properties of a picture file's pages from its header alone: BMP, JPEG, PNG, GIF and
// TIFF, told apart by content. Costs microseconds and a bounded number of reads, whatever the file
// claims.
#pragma once

#include "codecs/pixels/PageProperties.h"

#include <optional>
#include <string>
#include <vector>

namespace paperline {

enum class PictureKind { none, bmp, jpeg, png, gif, tiff };
PictureKind pictureKind(const std::string& path);

// Page `pageIndex` of the file (only a TIFF file has more than page 0). Nothing when the file is
// not there, is no picture, or has no such page.
[[nodiscard]] std::optional<PictureHeader> readPictureHeader(const std::string& path,
                                                             int pageIndex);

// The sizes of all pages, in order; empty when the file is no picture.
std::vector<PixelSize> readPictureSizes(const std::string& path);

} // namespace paperline
