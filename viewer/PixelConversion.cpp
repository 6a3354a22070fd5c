#include "viewer/PixelConversion.h"

#include "viewer/ColourRows.h"

#include <QPainter>

#include <cstring>

namespace paperline {

namespace {

QImage::Format formatOf(int bitsPerPixel) {
    switch (bitsPerPixel) {
    case 1:
        return QImage::Format_Mono;
    case 8:
        return QImage::Format_Grayscale8;
    case 24:
        return QImage::Format_RGB888;
    default:
        return QImage::Format_Invalid;
    }
}

QImage colourImage(const BitmapImageRep& page) {
    QImage image = newColourImage(page.pixelsWide(), page.pixelsHigh());
    if (image.isNull())
        return {};
    auto* pixels = reinterpret_cast<QRgb*>(image.bits());
    const auto width = static_cast<size_t>(page.pixelsWide());
    forBandsOfRows(page.pixelsHigh(), [&](int first, int end) {
        for (int y = first; y < end; ++y)
            putColourRow(page.row(y),
                         ColourOrder::redFirst,
                         {pixels + static_cast<size_t>(y) * width, width});
    });
    return image;
}

} // namespace

QImage qtImage(const BitmapImageRep& page) {
    // Shares the page's pixels, which are only read; the result has its own.
    const QImage::Format format = formatOf(page.bitsPerPixel());
    if (format == QImage::Format_Invalid)
        return {};
    QImage view(page.bitmapData().data(),
                page.pixelsWide(),
                page.pixelsHigh(),
                static_cast<qsizetype>(page.bytesPerRow()),
                format);
    if (format == QImage::Format_Mono)
        view.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    if (format == QImage::Format_RGB888)
        return colourImage(page);
    const QImage opaque = opaqueImage(view);
    return format == opaque.format() ? opaque.copy() : opaque;
}

QImage opaqueImage(const QImage& image) {
    if (image.format() == QImage::Format_Grayscale8 || image.format() == QImage::Format_RGB32)
        return image;
    if (image.hasAlphaChannel()) {
        QImage white(image.size(), QImage::Format_RGB32);
        if (white.isNull())
            return {};
        white.fill(Qt::white);
        QPainter(&white).drawImage(0, 0, image);
        return white;
    }
    const bool grey = image.depth() <= 8 && image.allGray();
    return image.convertToFormat(grey ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
}

Image imageObject(const QImage& picture) {
    const bool grey = picture.format() == QImage::Format_Grayscale8;
    const QImage pixels = grey ? picture : picture.convertToFormat(QImage::Format_RGB888);
    const int samples = grey ? 1 : 3;
    const std::shared_ptr<BitmapImageRep> page =
        BitmapImageRep::make({.pixelsWide = pixels.width(),
                              .pixelsHigh = pixels.height(),
                              .bitsPerSample = 8,
                              .samplesPerPixel = samples,
                              .bitsPerPixel = 8 * samples,
                              .bytesPerRow = int64_t{pixels.width()} * samples});
    if (pixels.isNull() || !page)
        return {};
    const auto rowBytes = static_cast<size_t>(page->bytesPerRow());
    for (int y = 0; y < pixels.height(); ++y)
        std::memcpy(page->bitmapData().data() + static_cast<size_t>(y) * rowBytes,
                    pixels.constScanLine(y),
                    rowBytes);
    return Image(page);
}

Rect rectOf(const QRect& rect) {
    const QRectF exact(rect);
    return {exact.x(), exact.y(), exact.width(), exact.height()};
}

} // namespace paperline
