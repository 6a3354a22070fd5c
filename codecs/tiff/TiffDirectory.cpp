#include "codecs/tiff/TiffDirectory.h"

#include <algorithm>
#include <unordered_set>

namespace paperline {

namespace {

enum Tag : uint16_t {
    imageWidth = 0x100,
    imageLength = 0x101,
    orientation = 0x112,
    xResolution = 0x11A,
    yResolution = 0x11B,
    resolutionUnit = 0x128,
};
enum Type : uint16_t { typeShort = 3, typeLong = 4, typeRational = 5 };
enum Unit : uint32_t { unitInch = 2, unitCentimetre = 3 };

constexpr double centimetresPerInch = 2.54;
constexpr size_t entryBytes = 12; // tag (2), type (2), count (4), value or its offset (4)
constexpr size_t mostEntries = 4096;
constexpr size_t mostDirectories = 65536;

struct Directory {
    PictureHeader header;
    uint32_t nextOffset = 0; // 0: the last one
};

class DirectoryReader {
public:
    DirectoryReader(ByteReader& file, std::endian order) : file_(file), order_(order) {}

    std::optional<uint16_t> word(uint64_t offset) { return file_.number<uint16_t>(offset, order_); }
    std::optional<uint32_t> doubleWord(uint64_t offset) {
        return file_.number<uint32_t>(offset, order_);
    }

    std::optional<Directory> read(uint64_t offset) {
        const size_t count = word(offset).value_or(0);
        const uint64_t entries = offset + 2;
        if (count == 0 || count > mostEntries || file_.bytes(entries, count * entryBytes).empty())
            return std::nullopt;
        Directory directory;
        directory.nextOffset = doubleWord(entries + count * entryBytes).value_or(0);
        PageProperties& properties = directory.header.properties;
        uint32_t unit = unitInch;
        for (uint64_t entry = entries; entry < entries + count * entryBytes; entry += entryBytes) {
            switch (word(entry).value_or(0)) {
            case imageWidth:
                directory.header.size.width = integer(entry).value_or(0);
                break;
            case imageLength:
                directory.header.size.height = integer(entry).value_or(0);
                break;
            case orientation:
                properties.orientation = integer(entry);
                break;
            case xResolution:
                properties.dpiWidth = rational(entry);
                break;
            case yResolution:
                properties.dpiHeight = rational(entry);
                break;
            case resolutionUnit:
                unit = integer(entry).value_or(unitInch);
                break;
            default:
                break;
            }
        }
        for (std::optional<double>* dpi : {&properties.dpiWidth, &properties.dpiHeight}) {
            if (unit != unitInch && unit != unitCentimetre)
                dpi->reset(); // a mere aspect ratio
            else if (*dpi && unit == unitCentimetre)
                **dpi *= centimetresPerInch;
        }
        return directory;
    }

private:
    std::optional<uint32_t> integer(uint64_t entry) {
        const uint16_t type = word(entry + 2).value_or(0);
        if (type == typeShort)
            return word(entry + 8);
        return type == typeLong ? doubleWord(entry + 8) : std::nullopt;
    }

    std::optional<double> rational(uint64_t entry) {
        const uint64_t offset = doubleWord(entry + 8).value_or(0);
        const uint32_t numerator = doubleWord(offset).value_or(0);
        const uint32_t denominator = doubleWord(offset + 4).value_or(0);
        if (word(entry + 2) != typeRational || denominator == 0)
            return std::nullopt;
        return static_cast<double>(numerator) / denominator;
    }

    ByteReader& file_;
    std::endian order_;
};

} // namespace

std::vector<PictureHeader> readTiffDirectories(ByteReader& file, size_t most) {
    std::vector<PictureHeader> headers;
    const bool isBigEndian = file.hasText(0, "MM");
    if (!isBigEndian && !file.hasText(0, "II"))
        return headers;
    DirectoryReader reader(file, isBigEndian ? std::endian::big : std::endian::little);
    if (reader.word(2) != 42)
        return headers;
    uint32_t offset = reader.doubleWord(4).value_or(0);
    std::unordered_set<uint32_t> seen;
    while (offset != 0 && headers.size() < std::min(most, mostDirectories) &&
           seen.insert(offset).second) {
        const std::optional<Directory> directory = reader.read(offset);
        if (!directory)
            break;
        headers.push_back(directory->header);
        offset = directory->nextOffset;
    }
    return headers;
}

} // namespace paperline
