#include "codecs/pixels/PageLayout.h"

namespace paperline {

bool hasPageLayout(const BitmapImageRep& image) {
    const int bits = image.bitsPerPixel();
    return (bits == 1 || bits == 8 || bits == 24) && image.bitsPerSample() == (bits == 1 ? 1 : 8) &&
           image.samplesPerPixel() == (bits == 24 ? 3 : 1);
}

} // namespace paperline
