// Loads page pictures and their properties from saved files.
#pragma once

#include "viewer/PageProperties.h"

#include <QImage>

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

// An A4 page at 1200 dpi has 139 million pixels.
inline constexpr uint64_t maximumPagePixels = 160'000'000;

// Page `pageIndex` of the file. A path that contains "pdf" is read as a PDF file and has no
// properties; any other by its content.
[[nodiscard]] LoadedPage loadPage(const std::string& path, int pageIndex);

// The same for a preview: where the codec can, only as fine as `longSidePixels` asks for.
[[nodiscard]] LoadedPage loadPreview(const std::string& path, int pageIndex, int longSidePixels);

// The page's pixel size as the file on disk says now, without decoding; 0 x 0 when it has none.
PixelSize pagePixelSize(const std::string& path, int pageIndex);

// The largest width and the largest height over all pages of the file.
PixelSize largestPagePixelSize(const std::string& path);

// The scratch JPEG as a thumbnail, its longer side at most `longSidePixels`. Null when it cannot be
// read back.
QImage readThumbnail(const std::string& jpegPath, int longSidePixels);

} // namespace paperline
