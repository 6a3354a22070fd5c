#include "codecs/jpeg/JpegMetadata.h"

#include "codecs/jpeg/ExifSegment.h"
#include "codecs/jpeg/JpegSegments.h"
#include "platform/files/FileContent.h"

#include <algorithm>
#include <string_view>

namespace paperline {
namespace {

constexpr uint8_t app0 = 0xE0;
constexpr uint8_t app1 = 0xE1;
constexpr size_t startBytes = 2;         // the start of the image
constexpr size_t segmentHeaderBytes = 4; // marker and length

bool isExif(std::span<const uint8_t> jpeg, const JpegSegment& segment) {
    constexpr std::string_view name("Exif\0", 5);
    const auto content = jpeg.subspan(segment.offset, segment.size).subspan(segmentHeaderBytes);
    return segment.marker == app1 && content.size() > name.size() &&
           std::equal(name.begin(), name.end(), content.begin(), [](char letter, uint8_t byte) {
               return static_cast<uint8_t>(letter) == byte;
           });
}

void append(std::vector<uint8_t>& to, std::span<const uint8_t> bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

void appendApp1(std::vector<uint8_t>& to, std::span<const uint8_t> content) {
    const size_t length = content.size() + 2;
    append(to,
           std::vector<uint8_t>{
               0xFF, app1, static_cast<uint8_t>(length >> 8U), static_cast<uint8_t>(length)});
    append(to, content);
}

// The content of the first EXIF segment; the standard allows one.
std::span<const uint8_t> olderExif(std::span<const uint8_t> jpeg,
                                   const std::vector<JpegSegment>& segments) {
    const auto found = std::find_if(segments.begin(), segments.end(), [&](const auto& segment) {
        return isExif(jpeg, segment);
    });
    if (found == segments.end())
        return {};
    return jpeg.subspan(found->offset + segmentHeaderBytes, found->size - segmentHeaderBytes);
}

} // namespace

std::optional<std::vector<uint8_t>> jpegWithMakeAndModel(std::span<const uint8_t> jpeg,
                                                         const std::string& make,
                                                         const std::string& model) {
    const std::optional<std::vector<JpegSegment>> segments = jpegSegments(jpeg);
    const std::optional<JpegHeader> header = readJpegHeader(jpeg);
    if (!segments || !header)
        return std::nullopt;
    const std::optional<std::vector<uint8_t>> exif =
        exifSegment({.make = make,
                     .model = model,
                     .widthPixels = header->widthPixels,
                     .heightPixels = header->heightPixels,
                     .components = header->components,
                     .horizontalDpi = header->horizontalDpi,
                     .verticalDpi = header->verticalDpi},
                    olderExif(jpeg, *segments));
    if (!exif)
        return std::nullopt;

    const auto firstOther = std::find_if(
        segments->begin(), segments->end(), [](const auto& one) { return one.marker != app0; });
    std::vector<uint8_t> result;
    result.reserve(jpeg.size() + segmentHeaderBytes + exif->size());
    append(result, jpeg.first(startBytes));
    for (auto segment = segments->begin(); segment != segments->end(); ++segment) {
        if (segment == firstOther)
            appendApp1(result, *exif);
        if (!isExif(jpeg, *segment))
            append(result, jpeg.subspan(segment->offset, segment->size));
    }
    append(result, jpeg.subspan(segments->back().offset + segments->back().size));
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
