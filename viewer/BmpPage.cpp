#include "viewer/BmpPage.h"

#include "codecs/bmp/BmpFile.h"
#include "codecs/bmp/BmpHeader.h"
#include "platform/process/ParallelFor.h"
#include "viewer/ColourRows.h"
#include "viewer/PageLoader.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace paperline {
namespace {

struct RowPlaces {
    int widthPixels = 0;
    int heightPixels = 0;
    uint64_t firstByte = 0;
    uint64_t rowBytes = 0;
};

std::optional<RowPlaces> rowPlaces(const std::string& path) {
    ByteReader file(path);
    const std::optional<BmpHeader> header = readBmpHeader(file);
    if (!file.hasText(0, "BM") || !header || !header->isOwnColour ||
        !isWithin(header->picture.size, maximumPagePixels))
        return std::nullopt;
    const auto [width, height] = header->picture.size;
    const RowPlaces rows{static_cast<int>(width),
                         static_cast<int>(height),
                         header->pixelOffset,
                         bmpStride(static_cast<int32_t>(width), 24)};
    const bool isWhole =
        rows.firstByte >= bmpHeaderBytes && file.byte(rows.firstByte + rows.rowBytes * height - 1);
    return isWhole ? std::optional(rows) : std::nullopt;
}

// Rows of the file from `first` on, each to its place.
bool readBand(const FilePieces& file, const RowPlaces& rows, int first, QRgb* pixels) {
    const int count = std::min(rowsOfBand, rows.heightPixels - first);
    const auto width = static_cast<size_t>(rows.widthPixels);
    std::vector<uint8_t> bytes(static_cast<size_t>(count) * rows.rowBytes);
    const uint64_t position = rows.firstByte + static_cast<uint64_t>(first) * rows.rowBytes;
    if (file.read(position, bytes) < bytes.size())
        return false;
    for (int row = 0; row < count; ++row) {
        const auto y = static_cast<size_t>(rows.heightPixels - 1 - first - row);
        putColourRow(std::span(bytes).subspan(static_cast<size_t>(row) * rows.rowBytes),
                     ColourOrder::blueFirst,
                     {pixels + y * width, width});
    }
    return true;
}

} // namespace

QImage readColourBmp(const std::string& path) {
    const FilePieces file(path);
    const std::optional<RowPlaces> rows = rowPlaces(path);
    if (!file.isOpen() || !rows)
        return {};
    QImage image = newColourImage(rows->widthPixels, rows->heightPixels);
    if (image.isNull())
        return {};
    auto* pixels = reinterpret_cast<QRgb*>(image.bits());
    const auto bands = static_cast<size_t>((rows->heightPixels - 1) / rowsOfBand + 1);
    const bool isWhole = parallelForAll(bands, processorCount(), [&](size_t band, unsigned) {
        return readBand(file, *rows, static_cast<int>(band) * rowsOfBand, pixels);
    });
    return isWhole ? image : QImage();
}

} // namespace paperline
