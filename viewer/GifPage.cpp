#include "viewer/GifPage.h"

#include "codecs/gif/GifDecoder.h"
#include "platform/files/FileContent.h"
#include "viewer/ColourRows.h"
#include "viewer/PageLoader.h"

#include <algorithm>
#include <array>
#include <span>

namespace paperline {
namespace {

// 12 bits per pixel, palettes and comments. Larger files are animations.
constexpr uint64_t largestFile = maximumPagePixels * 3 / 2 + (16U << 20U);

QRgb pixelOf(const PaletteColour& colour) {
    return qRgb(colour.red, colour.green, colour.blue);
}

// Sets all rows; `made` makes the image's pixel of a colour.
template <typename Pixel>
void putRows(const GifPicture& picture, QImage& image, Pixel (*made)(const PaletteColour&)) {
    std::array<Pixel, mostPaletteColours> meanings;
    std::transform(picture.colours.begin(), picture.colours.end(), meanings.begin(), made);
    const Pixel behind = made(picture.behind);
    uint8_t* const bytes = image.bits();
    const auto rowBytes = static_cast<size_t>(image.bytesPerLine());
    const auto putRow = [&](int y) {
        auto* const target = reinterpret_cast<Pixel*>(bytes + static_cast<size_t>(y) * rowBytes);
        const std::span<Pixel> pixels(target, static_cast<size_t>(picture.screenWidth));
        const bool hasPixels = y >= picture.top && y < picture.top + picture.height;
        if (!hasPixels || picture.width < picture.screenWidth)
            std::fill(pixels.begin(), pixels.end(), behind);
        if (!hasPixels)
            return;
        const std::span<const uint8_t> row = picture.row(y - picture.top);
        std::transform(row.begin(), row.end(), pixels.begin() + picture.left, [&](uint8_t place) {
            return meanings[place];
        });
    };
    forBandsOfRows(picture.screenHeight, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            putRow(y);
    });
}

} // namespace

QImage readGif(const std::string& path) {
    const auto file = readFile(path, largestFile);
    const auto picture = file ? decodeGif(*file, maximumPagePixels) : std::nullopt;
    if (!picture)
        return {};
    const bool isGrey = picture->isGrey();
    QImage image =
        isGrey ? QImage(picture->screenWidth, picture->screenHeight, QImage::Format_Grayscale8)
               : newColourImage(picture->screenWidth, picture->screenHeight);
    if (image.isNull())
        return {};
    if (isGrey)
        putRows<uint8_t>(*picture, image, [](const PaletteColour& colour) { return colour.red; });
    else
        putRows<QRgb>(*picture, image, pixelOf);
    return image;
}

} // namespace paperline
