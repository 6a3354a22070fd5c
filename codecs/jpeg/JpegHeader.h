// What a JPEG file says before its first scan, without decoding.
#pragma once

#include "codecs/pixels/Geometry.h"
#include "platform/files/ByteReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace paperline {

struct JpegSegment {
    uint8_t marker = 0;  // 0xE1: APP1
    uint64_t offset = 0; // of the marker
    size_t size = 0;     // with marker and length
    bool isExif = false; // EXIF data in an APP1 segment
};

struct JpegHeader {
    std::vector<JpegSegment> segments; // in order, up to the header of the first scan
    bool reachesScan = false;          // else the file is damaged or ends before a scan
    PixelSize size;
    int components = 0;
    // Baseline, extended or progressive, Huffman coded, 8 bits, and complete up to the scan: every
    // JPEG reader can decode it.
    bool isCommon = false;
    bool hasAdobeMarker = false; // CMYK is stored inverted
    double horizontalDpi = 0;    // of the JFIF segment; 0: unknown
    double verticalDpi = 0;
};

// Marker and length in front of a segment's content.
inline constexpr size_t jpegSegmentHeaderBytes = 4;

// JFIF's density units in dots per inch; 0 for a mere aspect ratio.
double jpegDpi(unsigned unit, unsigned density);

// Nothing when the file is not JPEG or has no frame header. Reads a bounded number of segments.
[[nodiscard]] std::optional<JpegHeader> readJpegHeader(ByteReader& file);

} // namespace paperline
