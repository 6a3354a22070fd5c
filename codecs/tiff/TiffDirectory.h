// The directories of a TIFF file, or of the EXIF block of another file: sizes and properties.
#pragma once

#include "codecs/pixels/HeaderBytes.h"
#include "codecs/pixels/PageProperties.h"

#include <functional>

namespace paperline {

// True when the bytes begin like a TIFF file.
bool looksLikeTiff(HeaderBytes& bytes);

// Hands one directory after the other to `visit` until it answers false. A chain that returns to a
// directory already seen ends there; damaged directories end it too.
void walkTiffDirectories(HeaderBytes& bytes,
                         const std::function<bool(const PictureHeader&)>& visit);

} // namespace paperline
