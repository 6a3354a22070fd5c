// Loads page pictures and their properties from saved files.
#pragma once

#include "codecs/pixels/PageProperties.h"
#include "viewer/PdfPageSizes.h"
#include "viewer/PdfPages.h"

#include <QImage>

#include <chrono>
#include <memory>
#include <string>

namespace paperline {

// A page to draw. `pixels` is its nominal size, which the image need not have: a PDF page counts
// pixels of 72 dpi and is drawn finer.
struct PageRaster {
    QImage image;
    PixelSize pixels;
};

enum class PageLoadError {
    none,
    cannotOpen,    // missing or not readable
    notAPicture,   // of no format that is shown
    noSuchPage,    // the file has fewer pages
    tooManyPixels, // more than maximumPagePixels
    damaged,       // the pixels cannot be decoded
};

struct LoadedPage {
    PageLoadError error = PageLoadError::none;
    std::shared_ptr<const PageRaster> raster; // null on error
    PageProperties properties;
};

const char* describe(PageLoadError error);

// An A4 page at 1200 dpi has 139 million pixels.
inline constexpr uint64_t maximumPagePixels = 160'000'000;

// Page `pageIndex` of the file. A path that contains "pdf" is read as PDF unless the file is a
// picture; PDF pages have no properties.
[[nodiscard]] LoadedPage loadPage(const std::string& path, int pageIndex);

// The pages of one file for previews, decoded only as fine as asked where the codec can do that.
// PDF and TIFF files (by their path) have all their pages, others one.
class PagePreviews {
public:
    explicit PagePreviews(const std::string& path);
    int pageCount() const { return pageCount_; } // 0: the file cannot be read
    [[nodiscard]] LoadedPage load(int pageIndex, int longSidePixels) const;

private:
    std::string path_;
    bool isPdf_ = false;
    PdfPages pdf_;
    int pageCount_ = 0;
};

// The page's pixel size in the file's header now; 0 x 0 without one.
PixelSize pagePixelSize(const std::string& path, int pageIndex);

// The largest width and the largest height over all pages of the file.
LargestPageSize largestPagePixelSize(const std::string& path, std::chrono::milliseconds budget);

// The JPEG file as a thumbnail, its longer side at most `longSidePixels`. Null on failure.
QImage readThumbnail(const std::string& jpegPath, int longSidePixels);

} // namespace paperline
