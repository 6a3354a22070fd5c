#include "codecs/bmp/BmpHeader.h"

namespace paperline {
namespace {

constexpr double metresPerInch = 0.0254;
constexpr uint32_t coreHeaderBytes = 12; // with 16-bit sizes, which are all that is read of it

std::optional<BmpHeader> readCoreHeader(ByteReader& file) {
    const auto width = file.number<uint16_t>(biWidth, std::endian::little);
    const auto height = file.number<uint16_t>(biWidth + 2, std::endian::little);
    return width && height ? std::optional(BmpHeader{{{*width, *height}, {}}}) : std::nullopt;
}

} // namespace

std::optional<BmpHeader> readBmpHeader(ByteReader& file) {
    const auto infoBytes = file.number<uint32_t>(biSize, std::endian::little);
    if (infoBytes == coreHeaderBytes)
        return readCoreHeader(file);
    const std::span<const uint8_t> bytes = file.bytes(0, bmpHeaderBytes);
    if (bytes.empty() || *infoBytes < bmpInfoHeaderBytes)
        return std::nullopt;
    const auto word = [bytes](BmpField field) {
        return readInteger<uint16_t>(bytes.subspan(field), std::endian::little);
    };
    const auto doubleWord = [bytes](BmpField field) {
        return readInteger<uint32_t>(bytes.subspan(field), std::endian::little);
    };
    // Negative: the top row first, as far as the height is concerned.
    const auto magnitude = [](uint32_t stored) {
        return stored > INT32_MAX ? 0U - stored : stored;
    };
    BmpHeader header;
    header.picture.size = {magnitude(doubleWord(biWidth)), magnitude(doubleWord(biHeight))};
    header.picture.properties.dpiWidth = doubleWord(biXPelsPerMeter) * metresPerInch;
    header.picture.properties.dpiHeight = doubleWord(biYPelsPerMeter) * metresPerInch;
    header.pixelOffset = doubleWord(bfOffBits);
    header.isOwnColour = *infoBytes == bmpInfoHeaderBytes && word(biPlanes) == 1 &&
                         word(biBitCount) == 24 && doubleWord(biCompression) == 0 &&
                         doubleWord(biWidth) <= INT32_MAX && doubleWord(biHeight) <= INT32_MAX;
    return header;
}

} // namespace paperline
