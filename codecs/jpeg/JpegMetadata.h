// Texts in a JPEG file that is already written.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline {

// The file with a new EXIF segment behind its JFIF ones, in place of any older EXIF: maker and
// model, and what the standard demands (codecs/jpeg/ExifSegment.h). Every other segment and the
// picture's data are copied as they are. Nothing when the bytes are no JPEG file.
[[nodiscard]] std::optional<std::vector<uint8_t>> jpegWithMakeAndModel(
    std::span<const uint8_t> jpeg, const std::string& make, const std::string& model);

// The same in a file. Atomic: on failure (false) the file is as it was.
[[nodiscard]] bool
setJpegMakeAndModel(const std::string& path, const std::string& make, const std::string& model);

} // namespace paperline
