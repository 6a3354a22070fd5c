#include "sources/framework/TiffPage.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace paperline::sources {

namespace {

constexpr uint16_t tagCount = 13;
constexpr uint32_t directoryOffset = 8;
// Entry count, entries and the next directory's offset, then the values that do not fit an entry.
constexpr uint32_t bitsOffset = directoryOffset + 2 + tagCount * 12 + 4;
constexpr uint32_t resolutionOffset = bitsOffset + 6;
constexpr uint32_t pixelOffset = resolutionOffset + 16;

constexpr uint16_t typeShort = 3;
constexpr uint16_t typeLong = 4;
constexpr uint16_t typeRational = 5;

class LittleEndianWriter {
public:
    void put16(uint32_t value) {
        bytes_.push_back(static_cast<uint8_t>(value));
        bytes_.push_back(static_cast<uint8_t>(value >> 8));
    }
    void put32(uint32_t value) {
        put16(value & 0xffff);
        put16(value >> 16);
    }
    void putEntry(uint16_t tag, uint16_t type, uint32_t count, uint32_t valueOrOffset) {
        put16(tag);
        put16(type);
        put32(count);
        put32(valueOrOffset);
    }
    void putRational(double value) {
        constexpr uint32_t denominator = 1000;
        const double limited = std::clamp(value, 0.0, 4'000'000.0);
        put32(static_cast<uint32_t>(std::floor(limited * denominator + 0.5)));
        put32(denominator);
    }
    std::vector<uint8_t> take() { return std::move(bytes_); }

private:
    std::vector<uint8_t> bytes_;
};

} // namespace

std::optional<std::vector<uint8_t>> tiffHeader(const PageFormat& format) {
    const int64_t byteCount = pageByteCount(format);
    if (byteCount == 0 || byteCount > UINT32_MAX - pixelOffset)
        return std::nullopt;
    const bool colour = format.bitsPerPixel == 24;
    const uint32_t bitsPerSample = format.bitsPerPixel == 1 ? 1 : 8;

    LittleEndianWriter out;
    out.put16(0x4949); // "II"
    out.put16(42);
    out.put32(directoryOffset);
    out.put16(tagCount);
    out.putEntry(254, typeLong, 1, 0); // NewSubfileType
    out.putEntry(256, typeLong, 1, static_cast<uint32_t>(format.widthPixels));
    out.putEntry(257, typeLong, 1, static_cast<uint32_t>(format.heightPixels));
    out.putEntry(258, typeShort, colour ? 3 : 1, colour ? bitsOffset : bitsPerSample);
    out.putEntry(259, typeShort, 1, 1);              // not compressed
    out.putEntry(262, typeShort, 1, colour ? 2 : 1); // RGB, or zero is black
    out.putEntry(273, typeLong, 1, pixelOffset);
    out.putEntry(277, typeShort, 1, colour ? 3 : 1);
    out.putEntry(278, typeLong, 1, static_cast<uint32_t>(format.heightPixels));
    out.putEntry(279, typeLong, 1, static_cast<uint32_t>(byteCount));
    out.putEntry(282, typeRational, 1, resolutionOffset);
    out.putEntry(283, typeRational, 1, resolutionOffset + 8);
    out.putEntry(296, typeShort, 1, 2); // inches
    out.put32(0);                       // the last directory
    for (int sample = 0; sample < 3; ++sample)
        out.put16(bitsPerSample);
    out.putRational(format.horizontalDpi);
    out.putRational(format.verticalDpi);
    return out.take();
}

} // namespace paperline::sources
