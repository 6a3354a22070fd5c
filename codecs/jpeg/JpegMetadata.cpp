#include "codecs/jpeg/JpegMetadata.h"

#include "codecs/jpeg/ExifSegment.h"
#include "codecs/jpeg/JpegHeader.h"
#include "platform/files/FileContent.h"

#include <algorithm>
#include <array>

namespace paperline {
namespace {

constexpr uint8_t app0 = 0xE0;
constexpr uint8_t app1 = 0xE1;
constexpr size_t startOfImageBytes = 2;

void append(std::vector<uint8_t>& to, std::span<const uint8_t> bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

void appendApp1(std::vector<uint8_t>& to, std::span<const uint8_t> content) {
    std::array<uint8_t, jpegSegmentHeaderBytes> start{0xFF, app1};
    writeInteger(
        std::span(start).subspan(2), std::endian::big, static_cast<uint16_t>(content.size() + 2));
    append(to, start);
    append(to, content);
}

std::span<const uint8_t> bytesOf(std::span<const uint8_t> jpeg, const JpegSegment& segment) {
    return jpeg.subspan(static_cast<size_t>(segment.offset), segment.size);
}

} // namespace

std::optional<std::vector<uint8_t>> jpegWithMakeAndModel(std::span<const uint8_t> jpeg,
                                                         const std::string& make,
                                                         const std::string& model) {
    ByteReader file(jpeg);
    const std::optional<JpegHeader> header = readJpegHeader(file);
    if (!header || !header->reachesScan || header->size.width == 0 || header->size.height == 0)
        return std::nullopt;
    const std::vector<JpegSegment>& segments = header->segments;
    // The first one; the standard allows no other.
    const auto olderExif =
        std::find_if(segments.begin(), segments.end(), [](const auto& one) { return one.isExif; });
    const std::optional<std::vector<uint8_t>> exif = exifSegment(
        {.make = make,
         .model = model,
         .widthPixels = static_cast<int32_t>(header->size.width),
         .heightPixels = static_cast<int32_t>(header->size.height),
         .components = header->components,
         .horizontalDpi = header->horizontalDpi,
         .verticalDpi = header->verticalDpi},
        olderExif == segments.end() ? std::span<const uint8_t>()
                                    : bytesOf(jpeg, *olderExif).subspan(jpegSegmentHeaderBytes));
    if (!exif)
        return std::nullopt;

    const auto firstOther = std::find_if(
        segments.begin(), segments.end(), [](const auto& one) { return one.marker != app0; });
    std::vector<uint8_t> result;
    result.reserve(jpeg.size() + jpegSegmentHeaderBytes + exif->size());
    append(result, jpeg.first(startOfImageBytes));
    for (auto segment = segments.begin(); segment != segments.end(); ++segment) {
        if (segment == firstOther)
            appendApp1(result, *exif);
        if (!segment->isExif)
            append(result, bytesOf(jpeg, *segment));
    }
    append(result,
           jpeg.subspan(static_cast<size_t>(segments.back().offset) + segments.back().size));
    return result;
}

bool setJpegMakeAndModel(const std::string& path,
                         const std::string& make,
                         const std::string& model) {
    const std::optional<std::vector<uint8_t>> jpeg = readFile(path);
    if (!jpeg)
        return false;
    const std::optional<std::vector<uint8_t>> changed = jpegWithMakeAndModel(*jpeg, make, model);
    return changed && writeFileAtomically(path, *changed);
}

} // namespace paperline
