#include "codecs/jpeg/JpegHeader.h"

#include <string_view>

namespace paperline {

namespace {

enum Marker : uint8_t {
    temporary = 0x01,
    frame0 = 0xC0, // SOF0, baseline
    frame2 = 0xC2, // SOF2, progressive
    huffmanTables = 0xC4,
    reserved = 0xC8,
    arithmeticTables = 0xCC,
    frame15 = 0xCF,
    restart0 = 0xD0,
    startOfImage = 0xD8,
    endOfImage = 0xD9,
    startOfScan = 0xDA,
    app0 = 0xE0,
    app1 = 0xE1,
    app14 = 0xEE,
};

// Real files have fewer segments and fill bytes in front of the first scan.
constexpr int mostSteps = 65536;

bool hasNoLength(uint8_t marker) {
    return marker == temporary || (marker >= restart0 && marker <= startOfImage);
}

bool isFrameHeader(uint8_t marker) {
    return marker >= frame0 && marker <= frame15 && marker != huffmanTables && marker != reserved &&
           marker != arithmeticTables;
}

bool hasName(ByteReader& file, const JpegSegment& segment, std::string_view name) {
    return segment.size > jpegSegmentHeaderBytes + name.size() &&
           file.hasText(segment.offset + jpegSegmentHeaderBytes, name);
}

std::vector<JpegSegment> readSegments(ByteReader& file) {
    std::vector<JpegSegment> segments;
    uint64_t offset = 2;
    for (int step = 0; step < mostSteps && file.byte(offset) == uint8_t{0xFF}; ++step) {
        const uint8_t marker = file.byte(offset + 1).value_or(0);
        if (marker == 0xFF) { // a fill byte
            ++offset;
            continue;
        }
        if (hasNoLength(marker)) {
            offset += 2;
            continue;
        }
        const auto length = file.number<uint16_t>(offset + 2, std::endian::big);
        if (marker == 0 || marker == endOfImage || !length || *length < 2 ||
            file.bytes(offset + 1 + *length, 1).empty())
            break;
        JpegSegment segment{marker, offset, size_t{2} + *length};
        segment.isExif = marker == app1 && hasName(file, segment, std::string_view("Exif\0", 5));
        segments.push_back(segment);
        if (marker == startOfScan)
            break;
        offset += segment.size;
    }
    return segments;
}

// A segment's first bytes; empty when it is shorter.
std::span<const uint8_t> contentOf(ByteReader& file, const JpegSegment& segment, size_t count) {
    if (segment.size < jpegSegmentHeaderBytes + count)
        return {};
    return file.bytes(segment.offset + jpegSegmentHeaderBytes, count);
}

uint16_t wordAt(std::span<const uint8_t> content, size_t offset) {
    return readInteger<uint16_t>(content.subspan(offset), std::endian::big);
}

void readDensity(ByteReader& file, const JpegSegment& segment, JpegHeader& header) {
    if (!hasName(file, segment, std::string_view("JFIF\0", 5)))
        return;
    // The name, version (2 bytes), unit, densities (2 each).
    if (const auto content = contentOf(file, segment, 12); !content.empty()) {
        header.horizontalDpi = jpegDpi(content[7], wordAt(content, 8));
        header.verticalDpi = jpegDpi(content[7], wordAt(content, 10));
    }
}

bool readFrame(ByteReader& file, const JpegSegment& segment, JpegHeader& header) {
    const auto content = contentOf(file, segment, 6); // bits, height (2), width (2), components
    if (content.empty())
        return false;
    header.size = {wordAt(content, 3), wordAt(content, 1)};
    header.components = content[5];
    header.isCommon = segment.marker <= frame2 && content[0] == 8 && header.size.width > 0 &&
                      header.size.height > 0 &&
                      (header.components == 1 || header.components == 3 || header.components == 4);
    return true;
}

} // namespace

double jpegDpi(unsigned unit, unsigned density) {
    constexpr unsigned perInch = 1, perCentimetre = 2;
    return unit == perInch ? density : unit == perCentimetre ? density * 2.54 : 0;
}

std::optional<JpegHeader> readJpegHeader(ByteReader& file) {
    if (!file.hasText(0, "\xFF\xD8"))
        return std::nullopt;
    JpegHeader header;
    header.segments = readSegments(file);
    bool hasFrame = false;
    for (const JpegSegment& segment : header.segments) {
        if (segment.marker == app0)
            readDensity(file, segment, header);
        else if (segment.marker == app14 && hasName(file, segment, "Adobe"))
            header.hasAdobeMarker = true;
        else if (isFrameHeader(segment.marker) && !hasFrame)
            hasFrame = readFrame(file, segment, header);
        header.reachesScan = segment.marker == startOfScan;
    }
    header.isCommon = header.isCommon && header.reachesScan;
    return hasFrame ? std::optional(std::move(header)) : std::nullopt;
}

} // namespace paperline
