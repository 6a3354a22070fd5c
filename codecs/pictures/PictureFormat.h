// Tells picture files apart by their first bytes.
#pragma once

#include "platform/files/ByteReader.h"

#include <string>

namespace paperline {

enum class PictureFormat { none, bmp, gif, jpeg, png, pnm, tiff };

// None when the file is no picture, not a regular file, or cannot be read.
PictureFormat pictureFormat(ByteReader& file);
PictureFormat pictureFormat(const std::string& path);

} // namespace paperline
