// Changes maker and model in a JPEG file.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline {

// The file with one new EXIF segment after its JFIF segments, in place of any older ones: maker,
// model and what the standard requires (codecs/jpeg/ExifSegment.h). All other segments and the
// compressed data are copied unchanged. Nothing when the bytes are not a JPEG file.
[[nodiscard]] std::optional<std::vector<uint8_t>> jpegWithMakeAndModel(
    std::span<const uint8_t> jpeg, const std::string& make, const std::string& model);

// The same for a file. Atomic: on failure (false) the file is unchanged.
[[nodiscard]] bool
setJpegMakeAndModel(const std::string& path, const std::string& make, const std::string& model);

} // namespace paperline
