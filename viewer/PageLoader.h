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

// A page that can be drawn. The raster may have fewer or more pixels than the page counts: a page
// of a PDF file counts its box at 72 dots per inch and is drawn finer.
struct PageRaster {
    QImage image;
    PixelSize pixels;
};

enum class PageLoadError {
    none,
    cannotOpen,    // not there, not readable, no file
    notAPicture,   // of no kind that is shown
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

// Page `pageIndex` of the file. A path that contains "pdf" is read as a PDF file, without
// properties, unless the file is a picture; any other by its content.
[[nodiscard]] LoadedPage loadPage(const std::string& path, int pageIndex);

// The pages of one file for previews, each only as fine as asked where the codec can do that. The
// path decides how many pages there are: all of a PDF file, all of a TIFF file, else one; a picture
// whose path says PDF is counted as the picture it is.
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

// The page's pixel size as the file on disk says now, without decoding; 0 x 0 when it has none.
PixelSize pagePixelSize(const std::string& path, int pageIndex);

// The largest width and the largest height over all pages of the file.
LargestPageSize largestPagePixelSize(const std::string& path, std::chrono::milliseconds budget);

// The scratch JPEG as a thumbnail, its longer side at most `longSidePixels`. Null when it cannot be
// read back.
QImage readThumbnail(const std::string& jpegPath, int longSidePixels);

} // namespace paperline
