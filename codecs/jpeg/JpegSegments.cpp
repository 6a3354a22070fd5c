#include "codecs/jpeg/JpegSegments.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace paperline {

namespace {

constexpr uint8_t startOfImage = 0xD8;
constexpr uint8_t endOfImage = 0xD9;
constexpr uint8_t startOfScan = 0xDA;
constexpr uint8_t app0 = 0xE0;
constexpr uint8_t app14 = 0xEE;
constexpr double inchPerCentimetre = 2.54;

uint16_t word(std::span<const uint8_t> bytes, size_t offset) {
    return static_cast<uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

// Markers without a length: fill-ins and restarts that stray into a header.
bool standsAlone(uint8_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= startOfImage);
}

bool isFrameHeader(uint8_t marker) {
    constexpr std::array<uint8_t, 3> others{0xC4, 0xC8, 0xCC}; // tables and a reserved one
    return marker >= 0xC0 && marker <= 0xCF &&
           std::find(others.begin(), others.end(), marker) == others.end();
}

bool beginsWith(std::span<const uint8_t> content, std::string_view text) {
    return content.size() >= text.size() &&
           std::equal(text.begin(), text.end(), content.begin(), [](char letter, uint8_t byte) {
               return static_cast<uint8_t>(letter) == byte;
           });
}

void readDensity(std::span<const uint8_t> content, JpegHeader& header) {
    constexpr size_t headerBytes = 12; // "JFIF", zero, version, unit, two densities
    if (content.size() < headerBytes || !beginsWith(content, std::string_view("JFIF\0", 5)))
        return;
    const uint8_t unit = content[7];
    if (unit != 1 && unit != 2)
        return;
    const double factor = unit == 2 ? inchPerCentimetre : 1.0;
    header.horizontalDpi = word(content, 8) * factor;
    header.verticalDpi = word(content, 10) * factor;
}

bool readFrame(std::span<const uint8_t> content, uint8_t marker, JpegHeader& header) {
    if (content.size() < 6)
        return false;
    header.heightPixels = word(content, 1);
    header.widthPixels = word(content, 3);
    header.components = content[5];
    header.isCommon = marker <= 0xC2 && content[0] == 8 &&
                      (header.components == 1 || header.components == 3 || header.components == 4);
    return header.heightPixels > 0 && header.widthPixels > 0;
}

} // namespace

std::optional<std::vector<JpegSegment>> jpegSegments(std::span<const uint8_t> bytes) {
    if (bytes.size() < 2 || bytes[0] != 0xFF || bytes[1] != startOfImage)
        return std::nullopt;
    std::vector<JpegSegment> segments;
    size_t position = 2;
    while (bytes.size() - position >= 4 && bytes[position] == 0xFF) {
        const uint8_t marker = bytes[position + 1];
        if (marker == 0xFF) { // a fill byte
            ++position;
            continue;
        }
        if (standsAlone(marker)) {
            position += 2;
            continue;
        }
        const size_t size = size_t{2} + word(bytes, position + 2);
        if (marker == endOfImage || marker == 0 || size < 4 || size > bytes.size() - position)
            return std::nullopt;
        segments.push_back({marker, position, size});
        if (marker == startOfScan)
            return segments;
        position += size;
    }
    return std::nullopt;
}

std::optional<JpegHeader> readJpegHeader(std::span<const uint8_t> bytes) {
    const std::optional<std::vector<JpegSegment>> segments = jpegSegments(bytes);
    if (!segments)
        return std::nullopt;
    JpegHeader header;
    bool hasFrame = false;
    for (const JpegSegment& segment : *segments) {
        const auto content = bytes.subspan(segment.offset + 4, segment.size - 4);
        if (segment.marker == app0)
            readDensity(content, header);
        else if (segment.marker == app14 && beginsWith(content, "Adobe"))
            header.hasAdobeMarker = true;
        else if (isFrameHeader(segment.marker) && !hasFrame)
            hasFrame = readFrame(content, segment.marker, header);
    }
    return hasFrame ? std::optional(header) : std::nullopt;
}

} // namespace paperline
