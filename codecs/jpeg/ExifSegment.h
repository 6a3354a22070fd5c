// EXIF data of a JPEG file by libexif.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline {

struct ExifPicture {
    std::string make;
    std::string model;
    int32_t widthPixels = 0;
    int32_t heightPixels = 0;
    int components = 0;       // 1 grey, 3 colour
    double horizontalDpi = 0; // 0: unknown
    double verticalDpi = 0;
};

// The content of an APP1 segment, from "Exif" on, with the tags that the standard requires for a
// compressed image. `older` is the content of the file's own EXIF segment, or empty: its
// orientation, and its resolution when `picture` has none, are carried over, no other tag. Nothing
// when the result does not fit a segment.
[[nodiscard]] std::optional<std::vector<uint8_t>> exifSegment(const ExifPicture& picture,
                                                              std::span<const uint8_t> older);

} // namespace paperline
