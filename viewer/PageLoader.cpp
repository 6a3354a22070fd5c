#include "viewer/PageLoader.h"

#include "platform/PictureReader.h"
#include "viewer/PageListing.h"
#include "viewer/PdfPages.h"
#include "viewer/PictureHeader.h"

#include <QFile>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <cstring>

namespace paperline {

namespace {

// A page of a PDF file is kept this fine: sharp when fitted to a large screen.
constexpr int pdfLongSidePixels = 2200;

LoadedPage failure(PageLoadError error) {
    return {error, nullptr, {}};
}

LoadedPage loadPdfPage(const std::string& path, int pageIndex, int longSidePixels) {
    PdfPages pages;
    if (!pages.open(path))
        return failure(QFile::exists(QFile::decodeName(path.c_str())) ? PageLoadError::notAPicture
                                                                      : PageLoadError::cannotOpen);
    if (pageIndex < 0 || pageIndex >= pages.count())
        return failure(PageLoadError::noSuchPage);
    auto raster = std::make_shared<PageRaster>();
    raster->pixels = pages.pixelSize(pageIndex);
    raster->image = pages.draw(pageIndex, longSidePixels);
    if (raster->image.isNull())
        return failure(PageLoadError::damaged);
    return {PageLoadError::none, raster, {}};
}

// Grey or 32-bit colour without transparency: what draws and scales fastest.
QImage opaque(const QImage& image) {
    if (image.hasAlphaChannel()) {
        QImage white(image.size(), QImage::Format_RGB32);
        if (white.isNull())
            return {};
        white.fill(Qt::white);
        QPainter painter(&white);
        painter.drawImage(0, 0, image);
        return white;
    }
    if (image.format() == QImage::Format_Grayscale8 || image.format() == QImage::Format_RGB32)
        return image;
    const bool grey = image.depth() <= 8 && image.isGrayscale();
    return image.convertToFormat(grey ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
}

// Rows are copied: the two keep different strides.
QImage imageOf(const BitmapImageRep& page) {
    QImage::Format format = QImage::Format_Invalid;
    if (page.bitsPerPixel() == 1)
        format = QImage::Format_Mono; // index 0 is black
    else if (page.bitsPerPixel() == 8)
        format = QImage::Format_Grayscale8;
    else if (page.bitsPerPixel() == 24)
        format = QImage::Format_RGB888;
    QImage image(page.pixelsWide(), page.pixelsHigh(), format);
    if (image.isNull())
        return {};
    if (format == QImage::Format_Mono)
        image.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    const auto rowBytes =
        static_cast<size_t>(std::min<qsizetype>(image.bytesPerLine(), page.bytesPerRow()));
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(image.scanLine(y), page.row(y).data(), rowBytes);
    return opaque(image);
}

QImage decodeTiff(const std::string& path, int pageIndex) {
    const std::optional<DecodedImage> decoded = readPicture(path, pageIndex, maximumPagePixels);
    return decoded && decoded->image ? imageOf(*decoded->image) : QImage();
}

// JPEG data is decoded at a fraction of its size when that is fine enough; 0 asks for all of it.
QImage decodeByQt(const std::string& path, PixelSize size, int longSidePixels, bool isJpeg) {
    constexpr int allocationLimitMegabytes = 1024;
    QImageReader::setAllocationLimit(allocationLimitMegabytes);
    QImageReader reader(QFile::decodeName(path.c_str()));
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(false);
    const int longSide = static_cast<int>(std::max(size.width, size.height));
    if (isJpeg && longSidePixels > 0 && longSide > longSidePixels)
        reader.setScaledSize(QSize(static_cast<int>(size.width), static_cast<int>(size.height))
                                 .scaled(longSidePixels, longSidePixels, Qt::KeepAspectRatio)
                                 .expandedTo(QSize(1, 1)));
    return opaque(reader.read());
}

LoadedPage loadPicture(const std::string& path, int pageIndex, int longSidePixels) {
    const PictureKind kind = pictureKind(path);
    if (kind == PictureKind::none)
        return failure(QFile::exists(QFile::decodeName(path.c_str())) ? PageLoadError::notAPicture
                                                                      : PageLoadError::cannotOpen);
    const std::optional<PictureHeader> header = readPictureHeader(path, pageIndex);
    if (!header)
        return failure(pageIndex == 0 ? PageLoadError::damaged : PageLoadError::noSuchPage);
    const uint64_t pixels = uint64_t{header->size.width} * header->size.height;
    if (pixels == 0)
        return failure(PageLoadError::damaged);
    if (pixels > maximumPagePixels)
        return failure(PageLoadError::tooManyPixels);
    auto raster = std::make_shared<PageRaster>();
    raster->pixels = header->size;
    raster->image = kind == PictureKind::tiff
                        ? decodeTiff(path, pageIndex)
                        : decodeByQt(path, header->size, longSidePixels, kind == PictureKind::jpeg);
    if (raster->image.isNull())
        return failure(PageLoadError::damaged);
    return {PageLoadError::none, raster, header->properties};
}

} // namespace

LoadedPage loadPage(const std::string& path, int pageIndex) {
    return pageFileKind(path) == PageFileKind::pdf ? loadPdfPage(path, pageIndex, pdfLongSidePixels)
                                                   : loadPicture(path, pageIndex, 0);
}

LoadedPage loadPreview(const std::string& path, int pageIndex, int longSidePixels) {
    return pageFileKind(path) == PageFileKind::pdf ? loadPdfPage(path, pageIndex, longSidePixels)
                                                   : loadPicture(path, pageIndex, longSidePixels);
}

PixelSize pagePixelSize(const std::string& path, int pageIndex) {
    if (pageFileKind(path) != PageFileKind::pdf) {
        const std::optional<PictureHeader> header = readPictureHeader(path, pageIndex);
        return header ? header->size : PixelSize{};
    }
    const std::vector<PixelSize>& sizes = pdfPageSizes(path);
    return pageIndex >= 0 && static_cast<size_t>(pageIndex) < sizes.size()
               ? sizes[static_cast<size_t>(pageIndex)]
               : PixelSize{};
}

PixelSize largestPagePixelSize(const std::string& path) {
    const bool pdf = pageFileKind(path) == PageFileKind::pdf;
    PixelSize largest;
    for (const PixelSize& size : pdf ? pdfPageSizes(path) : readPictureSizes(path)) {
        largest.width = std::max(largest.width, size.width);
        largest.height = std::max(largest.height, size.height);
    }
    return largest;
}

QImage readThumbnail(const std::string& jpegPath, int longSidePixels) {
    const std::optional<PictureHeader> header = readPictureHeader(jpegPath, 0);
    if (!header || header->size.width == 0 || header->size.height == 0)
        return {};
    const QImage decoded = decodeByQt(jpegPath, header->size, longSidePixels, true);
    // Three bytes a pixel: hundreds of thumbnails are kept.
    return decoded.format() == QImage::Format_Grayscale8
               ? decoded
               : decoded.convertToFormat(QImage::Format_RGB888);
}

} // namespace paperline
