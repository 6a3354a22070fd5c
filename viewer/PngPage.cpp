#include "viewer/PngPage.h"

#include "codecs/png/PngRowReader.h"
#include "platform/files/FileContent.h"
#include "viewer/ColourRows.h"
#include "viewer/PageLoader.h"

#include <algorithm>

namespace paperline {
namespace {

// Our own files are not larger than their pixels.
constexpr uint64_t largestFile = maximumPagePixels * 4;

bool putRows(PngRowReader& rows, QImage& image) {
    const bool isColour = rows.layout().samples == 3;
    const auto width = static_cast<size_t>(rows.layout().widthPixels);
    const auto rowBytes = static_cast<size_t>(image.bytesPerLine());
    uint8_t* place = image.bits();
    for (int32_t y = 0; y < rows.layout().heightPixels; ++y, place += rowBytes) {
        const std::span<const uint8_t> row = rows.next();
        if (row.empty())
            return false;
        if (isColour)
            putColourRow(row, ColourOrder::redFirst, {reinterpret_cast<QRgb*>(place), width});
        else
            std::copy(row.begin(), row.end(), place);
    }
    return rows.isComplete();
}

} // namespace

QImage readOwnPng(const std::string& path) {
    const auto file = readFile(path, largestFile);
    const std::unique_ptr<PngRowReader> rows =
        file ? openPngRows(*file, maximumPagePixels) : nullptr;
    if (!rows)
        return {};
    const PngRowReader::Layout& layout = rows->layout();
    QImage image = layout.samples == 3
                       ? newColourImage(layout.widthPixels, layout.heightPixels)
                       : QImage(layout.widthPixels, layout.heightPixels, QImage::Format_Grayscale8);
    return !image.isNull() && putRows(*rows, image) ? image : QImage();
}

} // namespace paperline
