#include "codecs/pictures/PictureReader.h"

#include "codecs/pixels/DecodedImage.h"
#include "codecs/png/PngCodec.h"
#include "codecs/pnm/PnmDecoder.h"
#include "codecs/tiff/TiffCodec.h"
#include "platform/files/FileContent.h"

#include <algorithm>
#include <string_view>

namespace paperline {
namespace {

using Kind = PictureFormat;

Kind kindOfContent(std::string_view start) {
    using namespace std::string_view_literals;
    if (start.size() >= 3 && start[0] == 'P' && start[1] >= '1' && start[1] <= '6')
        return Kind::pnm;
    if (start.starts_with("\x89PNG\r\n\x1A\n"sv))
        return Kind::png;
    if (start.starts_with("\xFF\xD8\xFF"sv))
        return Kind::jpeg;
    // 42 for files of 32-bit offsets, 43 for those of 64.
    for (std::string_view mark : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv})
        if (start.starts_with(mark))
            return Kind::tiff;
    return Kind::none;
}

// The first bytes of a regular file; none when it cannot be read.
std::vector<uint8_t> startOfFile(const std::string& path, size_t count) {
    const std::optional<RegularFile> file = openRegularFile(path);
    if (!file)
        return {};
    std::vector<uint8_t> bytes(std::min(count, static_cast<size_t>(file->status.st_size)));
    bytes.resize(readUpTo(file->descriptor.number(), bytes).value_or(0));
    return bytes;
}

// No file of so many pixels is larger: 16-bit colours in figures need 18 bytes a pixel.
uint64_t largestFile(uint64_t maximumPixels) {
    constexpr uint64_t other = 16U << 20U; // profiles, previews, comments
    return maximumPixels < UINT64_MAX / 32 ? maximumPixels * 18 + other : UINT64_MAX;
}

std::optional<DecodedImage> decodeJpegWithin(std::span<const uint8_t> bytes,
                                             uint64_t maximumPixels) {
    const std::optional<Size> size = jpegPixelSize(bytes);
    if (!size || !withinPixels(static_cast<uint64_t>(size->width),
                               static_cast<uint64_t>(size->height),
                               maximumPixels))
        return std::nullopt;
    return decodeJpeg(bytes);
}

std::optional<DecodedImage> decodeWhole(Kind kind, const std::string& path, uint64_t mostPixels) {
    const auto bytes = readFile(path, largestFile(mostPixels));
    if (!bytes)
        return std::nullopt;
    switch (kind) {
    case Kind::pnm:
        return decodePnm(*bytes, mostPixels);
    case Kind::png:
        return decodePng(*bytes, mostPixels);
    default:
        return decodeJpegWithin(*bytes, mostPixels);
    }
}

bool hasHeader(Kind kind, const std::string& path) {
    // Room for the profiles and previews that may stand before the size.
    const std::vector<uint8_t> bytes = startOfFile(path, 64U << 20U);
    switch (kind) {
    case Kind::pnm:
        return hasPnmHeader(bytes);
    case Kind::png:
        return hasPngHeader(bytes);
    default:
        return jpegPixelSize(bytes).has_value();
    }
}

} // namespace

PictureFormat pictureFormat(const std::string& path) {
    const std::vector<uint8_t> start = startOfFile(path, 8);
    return kindOfContent({reinterpret_cast<const char*>(start.data()), start.size()});
}

std::optional<DecodedImage>
readPicture(const std::string& path, int pageIndex, uint64_t maximumPixels) {
    const Kind kind = pictureFormat(path);
    std::optional<DecodedImage> result;
    if (kind == Kind::tiff)
        result = decodeTiffPage(path, pageIndex, maximumPixels);
    else if (kind != Kind::none && pageIndex == 0)
        result = decodeWhole(kind, path, maximumPixels);
    if (result && result->horizontalDpi > 0 && result->verticalDpi > 0)
        result->image->setSize({result->image->pixelsWide() * 72 / result->horizontalDpi,
                                result->image->pixelsHigh() * 72 / result->verticalDpi});
    return result;
}

int picturePageCount(const std::string& path) {
    const Kind kind = pictureFormat(path);
    if (kind == Kind::none)
        return 0;
    if (kind == Kind::tiff)
        return tiffPageCount(path);
    return hasHeader(kind, path) ? 1 : 0;
}

} // namespace paperline
