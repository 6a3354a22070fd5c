#include "viewer/BmpPage.h"

#include "platform/files/FilePieces.h"
#include "viewer/ColourRows.h"
#include "viewer/PageLoader.h"

#include <array>
#include <atomic>
#include <new>
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

std::optional<RowPlaces> rowPlaces(const FilePieces& file) {
    std::array<uint8_t, 54> header{};
    if (file.read(0, header) < header.size())
        return std::nullopt;
    const auto number = [&header](size_t at, size_t count) {
        uint32_t value = 0;
        for (size_t byte = count; byte > 0; --byte)
            value = value << 8 | header[at + byte - 1];
        return value;
    };
    constexpr uint32_t plainHeaderBytes = 40;
    constexpr uint32_t colourBits = 24;
    const uint32_t width = number(18, 4);
    const uint32_t height = number(22, 4); // others are negative: the first row first
    const bool isPlainColour = header[0] == 'B' && header[1] == 'M' &&
                               number(14, 4) == plainHeaderBytes && number(26, 2) == 1 &&
                               number(28, 2) == colourBits && number(30, 4) == 0;
    const uint64_t pixels = uint64_t{width} * height;
    if (!isPlainColour || pixels == 0 || pixels > maximumPagePixels || height > INT32_MAX)
        return std::nullopt;
    const RowPlaces rows{static_cast<int>(width),
                         static_cast<int>(height),
                         number(10, 4),
                         (uint64_t{width} * 3 + 3) / 4 * 4};
    std::array<uint8_t, 1> lastByte{};
    const bool isWhole = rows.firstByte >= header.size() &&
                         file.read(rows.firstByte + rows.rowBytes * height - 1, lastByte) == 1;
    return isWhole ? std::optional(rows) : std::nullopt;
}

bool readBand(const FilePieces& file, const RowPlaces& rows, int first, int end, QRgb* pixels) {
    const auto width = static_cast<size_t>(rows.widthPixels);
    std::vector<uint8_t> bytes;
    try {
        bytes.resize(static_cast<size_t>(end - first) * rows.rowBytes);
    } catch (const std::bad_alloc&) {
        return false;
    }
    const uint64_t position = rows.firstByte + static_cast<uint64_t>(first) * rows.rowBytes;
    if (file.read(position, bytes) < bytes.size())
        return false;
    std::span<const uint8_t> row(bytes);
    for (int fromBottom = first; fromBottom < end; ++fromBottom, row = row.subspan(rows.rowBytes)) {
        const auto y = static_cast<size_t>(rows.heightPixels - 1 - fromBottom);
        putColourRow(row, ColourOrder::blueFirst, {pixels + y * width, width});
    }
    return true;
}

} // namespace

QImage readColourBmp(const std::string& path) {
    const FilePieces file(path);
    const std::optional<RowPlaces> rows = file.isOpen() ? rowPlaces(file) : std::nullopt;
    if (!rows)
        return {};
    QImage image = newColourImage(rows->widthPixels, rows->heightPixels);
    if (image.isNull())
        return {};
    auto* pixels = reinterpret_cast<QRgb*>(image.bits());
    std::atomic<bool> whole{true};
    forBandsOfRows(rows->heightPixels, [&](int first, int end) {
        if (whole && !readBand(file, *rows, first, end, pixels))
            whole = false;
    });
    return whole ? image : QImage();
}

} // namespace paperline
