#include "output/PageEncoder.h"

#include "base/FileFormats.h"

#include <optional>
#include <utility>

namespace paperline {

namespace {

const PageCodecs::Encoder* encoderOf(const PageCodecs& codecs, int32_t imageType) {
    switch (imageType) {
    case imageTypeJpeg:
        return &codecs.jpeg;
    case imageTypePng:
        return &codecs.png;
    case imageTypeGif:
        return &codecs.gif;
    case imageTypeTiff:
        return &codecs.tiff;
    default:
        return nullptr;
    }
}

} // namespace

EncodedPage encodePage(const PageCodecs& codecs,
                       const BitmapImageRep& page,
                       int32_t imageType,
                       Density density) {
    const PageCodecs::Encoder* encode = encoderOf(codecs, imageType);
    if (encode == nullptr || !*encode)
        return {{}, "there is no encoder for this image type"};
    std::optional<std::vector<uint8_t>> bytes = (*encode)(page, density);
    if (!bytes)
        return {{}, "the page cannot be encoded"};
    return {std::move(*bytes), {}};
}

bool canWriteFormat(const PageCodecs& codecs, int32_t formatCode) {
    const FileFormat* format = fileFormatOf(formatCode);
    if (format == nullptr || format->code == formatBmp)
        return true;
    const PageCodecs::Encoder* encode = encoderOf(codecs, format->imageType);
    if (encode == nullptr || !*encode)
        return false;
    if (format->code == formatPdf || format->code == formatMultiPagePdf)
        return static_cast<bool>(codecs.pdf);
    if (format->code == formatMultiPageTiff)
        return codecs.tiffDeclared300Dpi && codecs.tiffUnchanged;
    return true;
}

} // namespace paperline
