// Pages of a PDF file: their boxes and their pictures.
#pragma once

#include "codecs/pixels/PageProperties.h"

#include <QImage>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

class QPdfDocument;

namespace paperline {

// One open PDF file. A page's pixel size is its box at 72 dots per inch.
class PdfPages {
public:
    PdfPages();
    ~PdfPages();
    PdfPages(const PdfPages&) = delete;
    PdfPages& operator=(const PdfPages&) = delete;

    [[nodiscard]] bool open(const std::string& path); // false: no PDF file that can be read
    int count() const;
    PixelSize pixelSize(int pageIndex) const; // 0 x 0: no such page

    // The page on white, its longer side `longSidePixels` long. Null when there is no such page or
    // it cannot be drawn at all; what is damaged inside the page stays white.
    QImage draw(int pageIndex, int longSidePixels) const;

private:
    std::unique_ptr<QPdfDocument> document_;
};

// Page sizes of PDF files, remembered as long as the file on disk stays the same: a look-up costs
// one question to the file system. Zero when the path is no PDF file or has no such page.
PixelSize pdfPageSize(const std::string& path, int pageIndex);
// The largest width and the largest height over the pages that are measured.
struct LargestPageSize {
    PixelSize size;
    bool complete = true; // all pages are measured

    void include(PixelSize page) {
        size.width = std::max(size.width, page.width);
        size.height = std::max(size.height, page.height);
    }
};

// Measures pages for about as long as `budget`, one at the least; asked again it goes on from
// there.
LargestPageSize largestPdfPageSize(const std::string& path, std::chrono::milliseconds budget);

} // namespace paperline
