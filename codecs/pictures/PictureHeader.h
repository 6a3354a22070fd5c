// The sizes and properties of a picture file's pages from its headers alone: BMP, GIF, JPEG, PNG
// and TIFF. A bounded number of reads, whatever the file claims.
#pragma once

#include "codecs/pixels/PageProperties.h"

#include <optional>
#include <string>
#include <vector>

namespace paperline {

// Page `pageIndex` of the file; only TIFF files have more than page 0. Nothing when the file is no
// such picture, is damaged, or has no such page.
[[nodiscard]] std::optional<PictureHeader> readPictureHeader(const std::string& path,
                                                             int pageIndex);

// The sizes of all pages, in order; empty when the file is no such picture.
std::vector<PixelSize> readPictureSizes(const std::string& path);

} // namespace paperline
