#include "sources/software/DocumentPage.h"

#include "sources/software/DocumentLayout.h"
#include "sources/software/PixelPacking.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace paperline::sources {

namespace {

constexpr int32_t bandRows = 64;
constexpr Ink paper{243, 243, 240};
constexpr Ink white{248, 248, 248};

// Added to eight samples at once; no sum exceeds 255, because inks leave room.
constexpr size_t noiseBytes = 4096;
using NoiseTable = std::array<uint8_t, noiseBytes + 8>;

NoiseTable makeNoise() {
    NoiseTable table{};
    uint32_t state = 20'011;
    for (uint8_t& level : table) {
        state = state * 1'664'525 + 1'013'904'223;
        const uint32_t bits = state >> 24;
        level = static_cast<uint8_t>((bits & 3) + (bits >> 2 & 1) + (bits >> 3 & 3)); // 0 to 7
    }
    return table;
}

void addNoise(std::span<uint8_t> row, int32_t y) {
    static const NoiseTable table = makeNoise();
    size_t place = static_cast<uint32_t>(y) * 2'654'435'761u % noiseBytes;
    size_t at = 0;
    for (; at + 8 <= row.size(); at += 8, place = (place + 8) % noiseBytes) {
        uint64_t pixels = 0, noise = 0;
        std::memcpy(&pixels, row.data() + at, 8);
        std::memcpy(&noise, table.data() + place, 8);
        pixels += noise;
        std::memcpy(row.data() + at, &pixels, 8);
    }
    for (; at < row.size(); ++at)
        row[at] = static_cast<uint8_t>(row[at] + table[place++ % noiseBytes]);
}

} // namespace

DocumentPainter::DocumentPainter(const PageFormat& format)
    : format_(format), reportDpi_(format.widthPixels / reportWidthMillimetres * millimetresPerInch),
      drawing_(drawReport(reportDpi_)), commonItems_(drawing_.count()) {
    if (format.bitsPerPixel == 1)
        greyBand_.resize(static_cast<size_t>(format.widthPixels) * bandRows);
}

void DocumentPainter::setPage(int pageNumber, int pageCount) {
    drawing_.truncate(commonItems_);
    addFooter(
        drawing_, format_.heightPixels / reportDpi_ * millimetresPerInch, pageNumber, pageCount);
}

void DocumentPainter::paintBand(int32_t firstRow, std::span<uint8_t> pixels) const {
    const bool blackAndWhite = format_.bitsPerPixel == 1;
    BandCanvas canvas(pixels, format_.widthPixels, format_.bitsPerPixel == 24 ? 3 : 1, firstRow);
    canvas.fill(blackAndWhite ? white : paper);
    drawing_.paint(canvas, blackAndWhite);
    if (blackAndWhite)
        return;
    const auto rowBytes = static_cast<size_t>(format_.bytesPerRow());
    for (int32_t y = canvas.firstRow(); y < canvas.endRow(); ++y)
        addNoise(pixels.subspan(static_cast<size_t>(y - firstRow) * rowBytes, rowBytes), y);
}

void DocumentPainter::paintRows(int32_t firstRow, std::span<uint8_t> rows) {
    const auto rowBytes = static_cast<size_t>(format_.bytesPerRow());
    const auto width = static_cast<size_t>(format_.widthPixels);
    while (rows.size() >= rowBytes) {
        const size_t count = std::min<size_t>(rows.size() / rowBytes, bandRows);
        const auto band = rows.first(count * rowBytes);
        if (format_.bitsPerPixel == 1) {
            const auto grey = std::span(greyBand_).first(count * width);
            paintBand(firstRow, grey);
            for (size_t row = 0; row < count; ++row)
                packBlackAndWhite(grey.subspan(row * width, width),
                                  band.subspan(row * rowBytes, rowBytes));
        } else {
            paintBand(firstRow, band);
        }
        rows = rows.subspan(band.size());
        firstRow += static_cast<int32_t>(count);
    }
}

} // namespace paperline::sources
