// A JPEG file's marker segments, up to the first scan: what a file says of its picture, and where
// things can be put in, without touching the picture's data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace paperline {

struct JpegSegment {
    uint8_t marker = 0; // 0xE1 of APP1
    size_t offset = 0;  // of its 0xFF
    size_t size = 0;    // with marker and length
};

// The segments between the start of the image and the first scan's header, which is the last of
// them. Nothing when the bytes are no JPEG file or end before that header does.
[[nodiscard]] std::optional<std::vector<JpegSegment>> jpegSegments(std::span<const uint8_t> bytes);

struct JpegHeader {
    int32_t widthPixels = 0;
    int32_t heightPixels = 0;
    int components = 0;
    // Baseline, extended or progressive, Huffman coded, 8 bits: what every reader has.
    bool isCommon = false;
    bool hasAdobeMarker = false; // CMYK pictures then hold light, not ink
    double horizontalDpi = 0;    // 0: the file does not say
    double verticalDpi = 0;
};
// From the start of a file, as far as it is given. Nothing as above, and without a frame header or
// with one that names no size.
[[nodiscard]] std::optional<JpegHeader> readJpegHeader(std::span<const uint8_t> bytes);

} // namespace paperline
