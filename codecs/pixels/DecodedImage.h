// What every decoder gives.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <memory>

namespace paperline {

struct DecodedImage {
    std::shared_ptr<BitmapImageRep> image; // 8 or 24 bits
    double horizontalDpi = 0;              // 0: the file does not say
    double verticalDpi = 0;
};

// True for a size that is not empty and has at most `maximumPixels`.
bool withinPixels(uint64_t widthPixels, uint64_t heightPixels, uint64_t maximumPixels);

} // namespace paperline
