#include "output/PageCodecs.h"

#include "codecs/gif/GifCodec.h"
#include "codecs/jpeg/JpegCodec.h"
#include "codecs/jpeg/JpegMetadata.h"
#include "codecs/pictures/PictureFormat.h"
#include "codecs/png/PngWriter.h"
#include "codecs/tiff/TiffMetadata.h"
#include "output/PdfCodecs.h"
#include "output/TiffCodecs.h"

#include <algorithm>
#include <cmath>

namespace paperline {

namespace {

// JFIF holds whole dots per inch of 16 bits.
uint16_t storedDpi(double dpi) {
    return static_cast<uint16_t>(std::lround(std::clamp(dpi, 1.0, 65535.0)));
}

std::optional<std::vector<uint8_t>> encodeAsJpeg(const BitmapImageRep& page, Density density) {
    return encodeJpeg(page,
                      {.quality = jpegQuality,
                       .horizontalDpi = storedDpi(density.horizontalDpi),
                       .verticalDpi = storedDpi(density.verticalDpi)});
}

std::optional<std::vector<uint8_t>> encodeAsPng(const BitmapImageRep& page, Density density) {
    return encodePng(page,
                     {.horizontalDpi = density.horizontalDpi, .verticalDpi = density.verticalDpi});
}

// The file's content decides, not its name.
bool setMakeAndModel(const std::string& path, const std::string& make, const std::string& model) {
    switch (pictureFormat(path)) {
    case PictureFormat::jpeg:
        return setJpegMakeAndModel(path, make, model);
    case PictureFormat::tiff:
        return setTiffMakeAndModel(path, make, model);
    default:
        return false;
    }
}

// The format has no place for a resolution.
std::optional<std::vector<uint8_t>> encodeAsGif(const BitmapImageRep& page, Density /*density*/) {
    return encodeGif(page);
}

} // namespace

PageCodecs platformCodecs() {
    PageCodecs codecs;
    codecs.jpeg = encodeAsJpeg;
    codecs.png = encodeAsPng;
    addTiffCodecs(codecs);
    codecs.setMakeAndModel = setMakeAndModel;
    codecs.gif = encodeAsGif;
    addPdfCodecs(codecs);
    return codecs;
}

PageCodecs& pageCodecs() {
    static PageCodecs codecs = platformCodecs();
    return codecs;
}

} // namespace paperline
