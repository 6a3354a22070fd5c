#include "codecs/pictures/PictureReader.h"

#include "codecs/jpeg/JpegCodec.h"
#include "codecs/pictures/PictureFormat.h"
#include "codecs/pictures/PictureHeader.h"
#include "codecs/png/PngCodec.h"
#include "codecs/pnm/PnmDecoder.h"
#include "codecs/tiff/TiffCodec.h"
#include "platform/files/FileContent.h"
#include "platform/files/FilePieces.h"

namespace paperline {
namespace {

// A plain PNM file has up to 18 bytes a pixel: three samples of five digits, each with a blank.
uint64_t largestFile(uint64_t maximumPixels) {
    constexpr uint64_t other = 16U << 20U; // profiles, previews, comments
    return maximumPixels < UINT64_MAX / 32 ? maximumPixels * 18 + other : UINT64_MAX;
}

std::optional<DecodedImage>
decode(PictureFormat format, const std::string& path, uint64_t maximumPixels) {
    const auto bytes = readFile(path, largestFile(maximumPixels));
    if (!bytes)
        return std::nullopt;
    if (format == PictureFormat::pnm)
        return decodePnm(*bytes, maximumPixels);
    return format == PictureFormat::png ? decodePng(*bytes, maximumPixels)
                                        : decodeJpeg(*bytes, maximumPixels);
}

bool startsLikePnm(const std::string& path) {
    std::vector<uint8_t> start(64 * 1024); // comments may precede the size
    start.resize(FilePieces(path).read(0, start));
    return hasPnmHeader(start);
}

bool namesASize(const std::string& path) {
    const std::optional<PictureHeader> header = readPictureHeader(path, 0);
    return header && header->size.width > 0 && header->size.height > 0;
}

} // namespace

std::optional<DecodedImage>
readPicture(const std::string& path, int pageIndex, uint64_t maximumPixels) {
    std::optional<DecodedImage> result;
    switch (const PictureFormat format = pictureFormat(path)) {
    case PictureFormat::tiff:
        result = decodeTiffPage(path, pageIndex, maximumPixels);
        break;
    case PictureFormat::jpeg:
    case PictureFormat::png:
    case PictureFormat::pnm:
        if (pageIndex == 0)
            result = decode(format, path, maximumPixels);
        break;
    default:
        break;
    }
    if (result && result->horizontalDpi > 0 && result->verticalDpi > 0)
        result->image->setSize({result->image->pixelsWide() * 72 / result->horizontalDpi,
                                result->image->pixelsHigh() * 72 / result->verticalDpi});
    return result;
}

int picturePageCount(const std::string& path) {
    switch (pictureFormat(path)) {
    case PictureFormat::tiff:
        return tiffPageCount(path);
    case PictureFormat::jpeg:
    case PictureFormat::png:
        return namesASize(path) ? 1 : 0;
    case PictureFormat::pnm:
        return startsLikePnm(path) ? 1 : 0;
    default:
        return 0;
    }
}

} // namespace paperline
