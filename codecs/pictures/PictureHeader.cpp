#include "codecs/pictures/PictureHeader.h"

#include "codecs/pixels/HeaderBytes.h"
#include "codecs/tiff/TiffDirectory.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace paperline {

namespace {

constexpr double centimetresPerInch = 2.54;
constexpr double metresPerInch = 0.0254;
// More segments or chunks in front of the pixels than any real file has.
constexpr int maximumBlocks = 4096;

bool hasTextAt(HeaderBytes& bytes, uint64_t offset, std::string_view text) {
    std::array<uint8_t, 8> found{};
    const std::span<uint8_t> part = std::span(found).first(text.size());
    return bytes.read(offset, part) &&
           std::equal(part.begin(), part.end(), text.begin(), [](uint8_t byte, char letter) {
               return byte == static_cast<uint8_t>(letter);
           });
}

PictureKind kindOf(HeaderBytes& bytes) {
    if (hasTextAt(bytes, 0, "\xFF\xD8\xFF"))
        return PictureKind::jpeg;
    if (hasTextAt(bytes, 0, "\x89PNG\r\n\x1A\n"))
        return PictureKind::png;
    if (hasTextAt(bytes, 0, "GIF87a") || hasTextAt(bytes, 0, "GIF89a"))
        return PictureKind::gif;
    if (looksLikeTiff(bytes))
        return PictureKind::tiff;
    if (hasTextAt(bytes, 0, "BM"))
        return PictureKind::bmp;
    return PictureKind::none;
}

std::optional<PictureHeader> readBmp(HeaderBytes& bytes) {
    const std::optional<uint32_t> headerSize = bytes.numberAt32(14, false);
    PictureHeader header;
    if (headerSize == 12U) {
        header.size.width = bytes.numberAt16(18, false).value_or(0);
        header.size.height = bytes.numberAt16(20, false).value_or(0);
        return header;
    }
    if (!headerSize || *headerSize < 40)
        return std::nullopt;
    // A negative height stands for rows from the top.
    const auto magnitude = [](uint32_t stored) {
        return stored > INT32_MAX ? 0U - stored : stored;
    };
    header.size.width = magnitude(bytes.numberAt32(18, false).value_or(0));
    header.size.height = magnitude(bytes.numberAt32(22, false).value_or(0));
    if (const auto dotsPerMetre = bytes.numberAt32(38, false))
        header.properties.dpiWidth = *dotsPerMetre * metresPerInch;
    if (const auto dotsPerMetre = bytes.numberAt32(42, false))
        header.properties.dpiHeight = *dotsPerMetre * metresPerInch;
    return header;
}

std::optional<PictureHeader> readGif(HeaderBytes& bytes) {
    const std::optional<uint16_t> width = bytes.numberAt16(6, false);
    const std::optional<uint16_t> height = bytes.numberAt16(8, false);
    if (!width || !height)
        return std::nullopt;
    return PictureHeader{{*width, *height}, {}};
}

std::optional<PictureHeader> readPng(HeaderBytes& bytes) {
    const std::optional<uint32_t> width = bytes.numberAt32(16, true);
    const std::optional<uint32_t> height = bytes.numberAt32(20, true);
    if (!width || !height || !hasTextAt(bytes, 12, "IHDR"))
        return std::nullopt;
    PictureHeader header{{*width, *height}, {}};
    uint64_t offset = 8;
    for (int i = 0; i < maximumBlocks && !hasTextAt(bytes, offset + 4, "IDAT"); ++i) {
        const std::optional<uint32_t> length = bytes.numberAt32(offset, true);
        if (!length)
            break;
        if (hasTextAt(bytes, offset + 4, "pHYs") && bytes.byteAt(offset + 16) == uint8_t{1}) {
            header.properties.dpiWidth =
                bytes.numberAt32(offset + 8, true).value_or(0) * metresPerInch;
            header.properties.dpiHeight =
                bytes.numberAt32(offset + 12, true).value_or(0) * metresPerInch;
        }
        offset += uint64_t{12} + *length;
    }
    return header;
}

// Density of the JFIF header; unit 0 stands for a bare ratio.
void takeJfif(HeaderBytes& bytes, uint64_t offset, PageProperties& properties) {
    if (!hasTextAt(bytes, offset, "JFIF"))
        return;
    const std::optional<uint8_t> unit = bytes.byteAt(offset + 7);
    if (unit != uint8_t{1} && unit != uint8_t{2})
        return;
    const double factor = unit == uint8_t{2} ? centimetresPerInch : 1.0;
    properties.dpiWidth = bytes.numberAt16(offset + 8, true).value_or(0) * factor;
    properties.dpiHeight = bytes.numberAt16(offset + 10, true).value_or(0) * factor;
}

// Orientation, and the resolution where the JFIF header gave none.
void takeExif(const std::string& path,
              uint64_t offset,
              uint64_t length,
              PageProperties& properties) {
    constexpr uint64_t signatureLength = 6;
    HeaderBytes block;
    if (length <= signatureLength || !block.open(path))
        return;
    if (!hasTextAt(block, offset, std::string_view("Exif\0\0", signatureLength)))
        return;
    block.narrowTo(offset + signatureLength, length - signatureLength);
    walkTiffDirectories(block, [&properties](const PictureHeader& directory) {
        const PageProperties& found = directory.properties;
        if (!properties.orientation)
            properties.orientation = found.orientation;
        if (!properties.dpiWidth && !properties.dpiHeight) {
            properties.dpiWidth = found.dpiWidth;
            properties.dpiHeight = found.dpiHeight;
        }
        return false; // the second directory describes the embedded thumbnail
    });
}

bool isStartOfFrame(uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

bool standsAlone(uint8_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

// The marker at `offset`, fill bytes skipped; `offset` is left behind it.
std::optional<uint8_t> nextMarker(HeaderBytes& bytes, uint64_t& offset) {
    if (bytes.byteAt(offset) != uint8_t{0xFF})
        return std::nullopt;
    for (int i = 0; i < maximumBlocks; ++i) {
        const std::optional<uint8_t> marker = bytes.byteAt(++offset);
        if (!marker || *marker != 0xFF) {
            ++offset;
            return marker;
        }
    }
    return std::nullopt;
}

std::optional<PictureHeader> readJpeg(HeaderBytes& bytes, const std::string& path) {
    constexpr uint8_t app0 = 0xE0, app1 = 0xE1, startOfScan = 0xDA, endOfImage = 0xD9;
    PictureHeader header;
    uint64_t offset = 2;
    for (int i = 0; i < maximumBlocks; ++i) {
        const std::optional<uint8_t> marker = nextMarker(bytes, offset);
        if (!marker || *marker == startOfScan || *marker == endOfImage)
            return std::nullopt;
        if (standsAlone(*marker))
            continue;
        const std::optional<uint16_t> length = bytes.numberAt16(offset, true);
        if (!length || *length < 2)
            return std::nullopt;
        if (*marker == app0)
            takeJfif(bytes, offset + 2, header.properties);
        if (*marker == app1)
            takeExif(path, offset + 2, *length - 2U, header.properties);
        if (isStartOfFrame(*marker)) {
            header.size.height = bytes.numberAt16(offset + 3, true).value_or(0);
            header.size.width = bytes.numberAt16(offset + 5, true).value_or(0);
            return header;
        }
        offset += *length;
    }
    return std::nullopt;
}

std::optional<PictureHeader> readTiff(HeaderBytes& bytes, int pageIndex) {
    std::optional<PictureHeader> result;
    int page = 0;
    walkTiffDirectories(bytes, [&](const PictureHeader& directory) {
        if (page++ < pageIndex)
            return true;
        result = directory;
        return false;
    });
    return result;
}

} // namespace

PictureKind pictureKind(const std::string& path) {
    HeaderBytes bytes;
    return bytes.open(path) ? kindOf(bytes) : PictureKind::none;
}

std::optional<PictureHeader> readPictureHeader(const std::string& path, int pageIndex) {
    HeaderBytes bytes;
    if (pageIndex < 0 || !bytes.open(path))
        return std::nullopt;
    const PictureKind kind = kindOf(bytes);
    if (kind == PictureKind::tiff)
        return readTiff(bytes, pageIndex);
    if (pageIndex > 0)
        return std::nullopt;
    switch (kind) {
    case PictureKind::bmp:
        return readBmp(bytes);
    case PictureKind::jpeg:
        return readJpeg(bytes, path);
    case PictureKind::png:
        return readPng(bytes);
    case PictureKind::gif:
        return readGif(bytes);
    default:
        return std::nullopt;
    }
}

std::vector<PixelSize> readPictureSizes(const std::string& path) {
    std::vector<PixelSize> sizes;
    HeaderBytes bytes;
    if (!bytes.open(path))
        return sizes;
    if (kindOf(bytes) == PictureKind::tiff) {
        walkTiffDirectories(bytes, [&sizes](const PictureHeader& directory) {
            sizes.push_back(directory.size);
            return true;
        });
    } else if (const std::optional<PictureHeader> header = readPictureHeader(path, 0)) {
        sizes.push_back(header->size);
    }
    return sizes;
}

} // namespace paperline
