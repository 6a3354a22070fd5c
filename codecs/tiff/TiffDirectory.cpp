#include "codecs/tiff/TiffDirectory.h"

#include <unordered_set>
#include <vector>

namespace paperline {

namespace {

constexpr uint16_t tagImageWidth = 0x100;
constexpr uint16_t tagImageLength = 0x101;
constexpr uint16_t tagOrientation = 0x112;
constexpr uint16_t tagXResolution = 0x11A;
constexpr uint16_t tagYResolution = 0x11B;
constexpr uint16_t tagResolutionUnit = 0x128;
constexpr uint16_t typeShort = 3;
constexpr uint16_t typeLong = 4;
constexpr uint16_t typeRational = 5;
constexpr uint16_t unitInch = 2;
constexpr uint16_t unitCentimetre = 3;
constexpr double centimetresPerInch = 2.54;
constexpr size_t entryBytes = 12;
constexpr size_t maximumEntries = 4096;
constexpr size_t maximumDirectories = 65536;

// The values of one directory before its unit is known.
struct DirectoryValues {
    PictureHeader header;
    std::optional<double> xResolution;
    std::optional<double> yResolution;
    uint32_t resolutionUnit = unitInch;
};

std::optional<uint32_t> integerOf(std::span<const uint8_t> entry, bool bigEndian) {
    const uint16_t type = numberFrom16(entry.subspan(2), bigEndian);
    if (type == typeShort)
        return numberFrom16(entry.subspan(8), bigEndian);
    if (type == typeLong)
        return numberFrom32(entry.subspan(8), bigEndian);
    return std::nullopt;
}

std::optional<double>
rationalOf(HeaderBytes& bytes, std::span<const uint8_t> entry, bool bigEndian) {
    if (numberFrom16(entry.subspan(2), bigEndian) != typeRational)
        return std::nullopt;
    const uint64_t offset = numberFrom32(entry.subspan(8), bigEndian);
    const std::optional<uint32_t> numerator = bytes.numberAt32(offset, bigEndian);
    const std::optional<uint32_t> denominator = bytes.numberAt32(offset + 4, bigEndian);
    if (!numerator || !denominator || *denominator == 0)
        return std::nullopt;
    return static_cast<double>(*numerator) / static_cast<double>(*denominator);
}

void takeEntry(HeaderBytes& bytes,
               std::span<const uint8_t> entry,
               bool bigEndian,
               DirectoryValues& values) {
    switch (numberFrom16(entry, bigEndian)) {
    case tagImageWidth:
        values.header.size.width = integerOf(entry, bigEndian).value_or(0);
        break;
    case tagImageLength:
        values.header.size.height = integerOf(entry, bigEndian).value_or(0);
        break;
    case tagOrientation:
        if (const std::optional<uint32_t> orientation = integerOf(entry, bigEndian))
            values.header.properties.orientation = *orientation;
        break;
    case tagXResolution:
        values.xResolution = rationalOf(bytes, entry, bigEndian);
        break;
    case tagYResolution:
        values.yResolution = rationalOf(bytes, entry, bigEndian);
        break;
    case tagResolutionUnit:
        values.resolutionUnit = integerOf(entry, bigEndian).value_or(unitInch);
        break;
    default:
        break;
    }
}

// Resolutions without a unit are ratios, not dots per inch.
PictureHeader withResolution(const DirectoryValues& values) {
    PictureHeader header = values.header;
    if (values.resolutionUnit != unitInch && values.resolutionUnit != unitCentimetre)
        return header;
    const double factor = values.resolutionUnit == unitCentimetre ? centimetresPerInch : 1.0;
    if (values.xResolution)
        header.properties.dpiWidth = *values.xResolution * factor;
    if (values.yResolution)
        header.properties.dpiHeight = *values.yResolution * factor;
    return header;
}

struct Directory {
    PictureHeader header;
    uint32_t nextOffset = 0;
};

std::optional<Directory> readDirectory(HeaderBytes& bytes, uint64_t offset, bool bigEndian) {
    const std::optional<uint16_t> count = bytes.numberAt16(offset, bigEndian);
    if (!count || *count == 0 || *count > maximumEntries)
        return std::nullopt;
    std::vector<uint8_t> entries(*count * entryBytes);
    if (!bytes.read(offset + 2, entries))
        return std::nullopt;
    DirectoryValues values;
    for (size_t i = 0; i < *count; ++i)
        takeEntry(bytes,
                  std::span<const uint8_t>(entries).subspan(i * entryBytes, entryBytes),
                  bigEndian,
                  values);
    return Directory{withResolution(values),
                     bytes.numberAt32(offset + 2 + entries.size(), bigEndian).value_or(0)};
}

std::optional<bool> byteOrder(HeaderBytes& bytes) {
    const std::optional<uint16_t> mark = bytes.numberAt16(0, true);
    if (mark == 0x4949)
        return false;
    if (mark == 0x4D4D)
        return true;
    return std::nullopt;
}

} // namespace

bool looksLikeTiff(HeaderBytes& bytes) {
    const std::optional<bool> bigEndian = byteOrder(bytes);
    return bigEndian && bytes.numberAt16(2, *bigEndian) == 42;
}

void walkTiffDirectories(HeaderBytes& bytes,
                         const std::function<bool(const PictureHeader&)>& visit) {
    const std::optional<bool> bigEndian = byteOrder(bytes);
    if (!bigEndian)
        return;
    uint32_t offset = bytes.numberAt32(4, *bigEndian).value_or(0);
    std::unordered_set<uint32_t> seen;
    while (offset != 0 && seen.size() < maximumDirectories && seen.insert(offset).second) {
        const std::optional<Directory> directory = readDirectory(bytes, offset, *bigEndian);
        if (!directory || !visit(directory->header))
            return;
        offset = directory->nextOffset;
    }
}

} // namespace paperline
