#include "viewer/BmpPage.h"

#include "platform/files/Descriptor.h"
#include "platform/process/ParallelFor.h"
#include "viewer/ColourRows.h"
#include "viewer/PageLoader.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace paperline {
namespace {

bool readAt(int file, uint64_t position, std::span<uint8_t> target) {
    while (!target.empty()) {
        const ssize_t count =
            ::pread(file, target.data(), target.size(), static_cast<off_t>(position));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        target = target.subspan(static_cast<size_t>(count));
        position += static_cast<uint64_t>(count);
    }
    return true;
}

struct RowPlaces {
    int widthPixels = 0;
    int heightPixels = 0;
    uint64_t firstByte = 0;
    uint64_t rowBytes = 0;
};

std::optional<RowPlaces> rowPlaces(int file) {
    std::array<uint8_t, 54> header{};
    struct stat status = {};
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode) || !readAt(file, 0, header))
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
    const bool isWhole =
        rows.firstByte >= header.size() &&
        rows.firstByte + rows.rowBytes * height <= static_cast<uint64_t>(status.st_size);
    return isWhole ? std::optional(rows) : std::nullopt;
}

// Rows of the file from `first` on, each to its place.
bool readBand(int file, const RowPlaces& rows, int first, QRgb* pixels) {
    const int count = std::min(rowsOfBand, rows.heightPixels - first);
    const auto width = static_cast<size_t>(rows.widthPixels);
    std::vector<uint8_t> bytes;
    try {
        bytes.resize(static_cast<size_t>(count) * rows.rowBytes);
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (!readAt(file, rows.firstByte + static_cast<uint64_t>(first) * rows.rowBytes, bytes))
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
    const Descriptor file = openFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    const std::optional<RowPlaces> rows = file.isOpen() ? rowPlaces(file.number()) : std::nullopt;
    if (!rows)
        return {};
    QImage image = newColourImage(rows->widthPixels, rows->heightPixels);
    if (image.isNull())
        return {};
    auto* pixels = reinterpret_cast<QRgb*>(image.bits());
    std::atomic<bool> whole{true};
    const auto bands = static_cast<size_t>((rows->heightPixels - 1) / rowsOfBand + 1);
    parallelFor(bands, processorCount(), [&](size_t band, unsigned) {
        if (whole && !readBand(file.number(), *rows, static_cast<int>(band) * rowsOfBand, pixels))
            whole = false;
    });
    return whole ? image : QImage();
}

} // namespace paperline
