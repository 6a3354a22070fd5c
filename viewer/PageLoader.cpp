#include "viewer/PageLoader.h"

#include "codecs/pictures/PictureFormat.h"
#include "codecs/pictures/PictureHeader.h"
#include "codecs/pictures/PictureReader.h"
#include "codecs/pixels/DecodedImage.h"
#include "viewer/BmpPage.h"
#include "viewer/GifPage.h"
#include "viewer/PageListRules.h"
#include "viewer/PdfPages.h"
#include "viewer/PixelConversion.h"
#include "viewer/PngPage.h"

#include <QFile>
#include <QImageReader>

#include <algorithm>
#include <mutex>

namespace paperline {

namespace {

// Sharp when fitted to a large screen.
constexpr int pdfLongSidePixels = 2200;

LoadedPage failure(PageLoadError error) {
    return {error, nullptr, {}};
}

PageLoadError whyNotReadable(const std::string& path) {
    return QFile::exists(QFile::decodeName(path.c_str())) ? PageLoadError::notAPicture
                                                          : PageLoadError::cannotOpen;
}

// PNM pictures are read, but not shown.
PictureFormat shownFormat(const std::string& path) {
    const PictureFormat format = pictureFormat(path);
    return format == PictureFormat::pnm ? PictureFormat::none : format;
}

// What the path says, unless the content contradicts it: a picture below a folder whose name
// contains "pdf" is no PDF file.
PageFileKind fileKind(const std::string& path) {
    const PageFileKind byPath = pageFileKind(path);
    if (byPath != PageFileKind::pdf)
        return byPath;
    switch (shownFormat(path)) {
    case PictureFormat::none:
        return PageFileKind::pdf;
    case PictureFormat::tiff:
        return PageFileKind::tiff;
    default:
        return PageFileKind::singleImage;
    }
}

LoadedPage drawPdfPage(const PdfPages& pages, int pageIndex, int longSidePixels) {
    if (pageIndex < 0 || pageIndex >= pages.count())
        return failure(PageLoadError::noSuchPage);
    auto raster = std::make_shared<PageRaster>();
    raster->pixels = pages.pixelSize(pageIndex);
    raster->image = pages.draw(pageIndex, longSidePixels);
    if (raster->image.isNull())
        return failure(PageLoadError::damaged);
    return {PageLoadError::none, raster, {}};
}

QImage decodeByPlatform(const std::string& path, int pageIndex) {
    const std::optional<DecodedImage> decoded = readPicture(path, pageIndex, maximumPagePixels);
    return decoded && decoded->image ? qtImage(*decoded->image) : QImage();
}

// Process-wide; once, because several threads load pages.
void allowLargePictures() {
    constexpr int megabytes = 1024;
    static std::once_flag once;
    std::call_once(once, QImageReader::setAllocationLimit, megabytes);
}

// A JPEG file is decoded at the fraction of its size that is asked for; 0: all of it.
QImage decodeByQt(const std::string& path, PixelSize size, int longSidePixels, bool isJpeg) {
    allowLargePictures();
    QImageReader reader(QFile::decodeName(path.c_str()));
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(false);
    const int longSide = static_cast<int>(std::max(size.width, size.height));
    if (isJpeg && longSidePixels > 0 && longSide > longSidePixels)
        reader.setScaledSize(QSize(static_cast<int>(size.width), static_cast<int>(size.height))
                                 .scaled(longSidePixels, longSidePixels, Qt::KeepAspectRatio)
                                 .expandedTo(QSize(1, 1)));
    return opaqueImage(reader.read());
}

struct Wanted {
    PixelSize pageSize;
    int longSidePixels; // 0: all of them
};

QImage decode(const std::string& path, int pageIndex, PictureFormat format, const Wanted& wanted) {
    if (format == PictureFormat::tiff)
        return decodeByPlatform(path, pageIndex);
    if (format == PictureFormat::png) {
        if (const QImage image = readOwnPng(path); !image.isNull())
            return image;
        if (const QImage image = decodeByPlatform(path, pageIndex); !image.isNull())
            return image;
    }
    if (format == PictureFormat::bmp)
        if (const QImage image = readColourBmp(path); !image.isNull())
            return image;
    if (format == PictureFormat::gif)
        if (const QImage image = readGif(path); !image.isNull())
            return image;
    return decodeByQt(path, wanted.pageSize, wanted.longSidePixels, format == PictureFormat::jpeg);
}

LoadedPage loadPicture(const std::string& path, int pageIndex, int longSidePixels) {
    const PictureFormat format = shownFormat(path);
    if (format == PictureFormat::none)
        return failure(whyNotReadable(path));
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
    raster->image = decode(path, pageIndex, format, {header->size, longSidePixels});
    if (raster->image.isNull())
        return failure(PageLoadError::damaged);
    return {PageLoadError::none, raster, header->properties};
}

} // namespace

const char* describe(PageLoadError error) {
    switch (error) {
    case PageLoadError::none:
        return "no error";
    case PageLoadError::cannotOpen:
        return "the file cannot be opened";
    case PageLoadError::notAPicture:
        return "the file is no picture";
    case PageLoadError::noSuchPage:
        return "the file has no such page";
    case PageLoadError::tooManyPixels:
        return "the page has too many pixels";
    case PageLoadError::damaged:
        return "the page is damaged";
    }
    return "unknown error";
}

LoadedPage loadPage(const std::string& path, int pageIndex) {
    if (fileKind(path) != PageFileKind::pdf)
        return loadPicture(path, pageIndex, 0);
    PdfPages pages;
    return pages.open(path) ? drawPdfPage(pages, pageIndex, pdfLongSidePixels)
                            : failure(whyNotReadable(path));
}

PagePreviews::PagePreviews(const std::string& path) : path_(path) {
    switch (fileKind(path)) {
    case PageFileKind::pdf:
        isPdf_ = true;
        pageCount_ = pdf_.open(path) ? pdf_.count() : 0;
        break;
    case PageFileKind::tiff:
        pageCount_ = static_cast<int>(readPictureSizes(path).size());
        break;
    case PageFileKind::singleImage:
        pageCount_ = readPictureHeader(path, 0) ? 1 : 0;
        break;
    }
}

LoadedPage PagePreviews::load(int pageIndex, int longSidePixels) const {
    if (isPdf_)
        return drawPdfPage(pdf_, pageIndex, longSidePixels);
    LoadedPage page = loadPicture(path_, pageIndex, longSidePixels);
    if (page.raster == nullptr)
        return page;
    // From a whole page, sampled pixels are enough: they are averaged afterwards.
    const int sampledSide = 2 * longSidePixels;
    const QImage& image = page.raster->image;
    if (std::max(image.width(), image.height()) > sampledSide)
        page.raster = std::make_shared<PageRaster>(PageRaster{
            image.scaled(sampledSide, sampledSide, Qt::KeepAspectRatio, Qt::FastTransformation),
            page.raster->pixels});
    return page;
}

PixelSize pagePixelSize(const std::string& path, int pageIndex) {
    if (fileKind(path) == PageFileKind::pdf)
        return pdfPageSize(path, pageIndex);
    const std::optional<PictureHeader> header = readPictureHeader(path, pageIndex);
    return header ? header->size : PixelSize{};
}

LargestPageSize largestPagePixelSize(const std::string& path, std::chrono::milliseconds budget) {
    if (fileKind(path) == PageFileKind::pdf)
        return largestPdfPageSize(path, budget);
    LargestPageSize largest;
    for (const PixelSize& size : readPictureSizes(path))
        largest.include(size);
    return largest;
}

QImage readThumbnail(const std::string& jpegPath, int longSidePixels) {
    const std::optional<PictureHeader> header = readPictureHeader(jpegPath, 0);
    if (!header || header->size.width == 0 || header->size.height == 0)
        return {};
    const QImage decoded = decodeByQt(jpegPath, header->size, longSidePixels, true);
    // One or three bytes per pixel instead of four: hundreds of thumbnails are kept.
    return decoded.convertToFormat(decoded.allGray() ? QImage::Format_Grayscale8
                                                     : QImage::Format_RGB888);
}

} // namespace paperline
