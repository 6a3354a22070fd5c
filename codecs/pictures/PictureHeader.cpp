#include "codecs/pictures/PictureHeader.h"

#include "codecs/bmp/BmpHeader.h"
#include "codecs/jpeg/JpegHeader.h"
#include "codecs/pictures/PictureFormat.h"
#include "codecs/tiff/TiffDirectory.h"

#include <algorithm>

namespace paperline {

namespace {

constexpr double metresPerInch = 0.0254;
constexpr size_t allPages = SIZE_MAX;

std::optional<PictureHeader> readGif(ByteReader& file) {
    const auto width = file.number<uint16_t>(6, std::endian::little);
    const auto height = file.number<uint16_t>(8, std::endian::little);
    return width && height ? std::optional(PictureHeader{{*width, *height}, {}}) : std::nullopt;
}

std::optional<PictureHeader> readPng(ByteReader& file) {
    const auto number = [&file](uint64_t offset) {
        return file.number<uint32_t>(offset, std::endian::big);
    };
    if (!file.hasText(12, "IHDR") || !number(16) || !number(20))
        return std::nullopt;
    PictureHeader header{{*number(16), *number(20)}, {}};
    constexpr int mostChunks = 4096; // real files have fewer before IDAT
    uint64_t chunk = 8;              // length (4), type (4), content, checksum (4)
    for (int i = 0; i < mostChunks && !file.hasText(chunk + 4, "IDAT"); ++i) {
        const std::optional<uint32_t> length = number(chunk);
        if (!length)
            break;
        const uint8_t unit = file.byte(chunk + 16).value_or(0);
        if (file.hasText(chunk + 4, "pHYs") && unit == 1) { // dots per metre
            header.properties.dpiWidth = number(chunk + 8).value_or(0) * metresPerInch;
            header.properties.dpiHeight = number(chunk + 12).value_or(0) * metresPerInch;
        }
        chunk += uint64_t{12} + *length;
    }
    return header;
}

// Orientation, and the resolution when the JFIF segment has none.
void takeExif(ByteReader& file, const JpegSegment& segment, PageProperties& properties) {
    const size_t start = jpegSegmentHeaderBytes + 6; // "Exif", two bytes of 0
    if (segment.size <= start)
        return;
    ByteReader exif(file.bytes(segment.offset + start, segment.size - start));
    // A second directory describes the thumbnail.
    for (const PictureHeader& directory : readTiffDirectories(exif, 1)) {
        if (!properties.dpiWidth && !properties.dpiHeight)
            properties = directory.properties;
        else
            properties.orientation = directory.properties.orientation;
    }
}

std::optional<PictureHeader> readJpeg(ByteReader& file) {
    const std::optional<JpegHeader> jpeg = readJpegHeader(file);
    if (!jpeg)
        return std::nullopt;
    PictureHeader header{jpeg->size, {}};
    if (jpeg->horizontalDpi > 0)
        header.properties.dpiWidth = jpeg->horizontalDpi;
    if (jpeg->verticalDpi > 0)
        header.properties.dpiHeight = jpeg->verticalDpi;
    const auto exif = std::ranges::find_if(jpeg->segments, &JpegSegment::isExif);
    if (exif != jpeg->segments.end())
        takeExif(file, *exif, header.properties);
    return header;
}

// The first pages, at most `most`.
std::vector<PictureHeader> readHeaders(const std::string& path, size_t most) {
    ByteReader file(path);
    std::optional<PictureHeader> only;
    switch (pictureFormat(file)) {
    case PictureFormat::bmp:
        if (const std::optional<BmpHeader> bmp = readBmpHeader(file))
            only = bmp->picture;
        break;
    case PictureFormat::gif:
        only = readGif(file);
        break;
    case PictureFormat::jpeg:
        only = readJpeg(file);
        break;
    case PictureFormat::png:
        only = readPng(file);
        break;
    case PictureFormat::tiff:
        return readTiffDirectories(file, most);
    default:
        break;
    }
    return only ? std::vector{*only} : std::vector<PictureHeader>();
}

} // namespace

std::optional<PictureHeader> readPictureHeader(const std::string& path, int pageIndex) {
    const auto index = static_cast<size_t>(pageIndex);
    const std::vector<PictureHeader> headers =
        pageIndex < 0 ? std::vector<PictureHeader>() : readHeaders(path, index + 1);
    return index < headers.size() ? std::optional(headers[index]) : std::nullopt;
}

std::vector<PixelSize> readPictureSizes(const std::string& path) {
    std::vector<PixelSize> sizes;
    for (const PictureHeader& header : readHeaders(path, allPages))
        sizes.push_back(header.size);
    return sizes;
}

} // namespace paperline
