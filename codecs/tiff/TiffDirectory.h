// The directories of a TIFF file, or of the EXIF data of another file.
#pragma once

#include "codecs/pixels/PageProperties.h"
#include "platform/files/ByteReader.h"

#include <cstddef>
#include <vector>

namespace paperline {

// Sizes and properties of the first directories, at most `most`, in order. The list ends before a
// damaged directory and before one already seen. Empty for files with 64-bit offsets.
std::vector<PictureHeader> readTiffDirectories(ByteReader& file, size_t most);

} // namespace paperline
