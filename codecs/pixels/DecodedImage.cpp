#include "codecs/pixels/DecodedImage.h"

namespace paperline {

bool withinPixels(uint64_t widthPixels, uint64_t heightPixels, uint64_t maximumPixels) {
    return widthPixels > 0 && heightPixels > 0 && heightPixels <= maximumPixels / widthPixels;
}

} // namespace paperline
