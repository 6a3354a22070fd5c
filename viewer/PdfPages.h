// Pages of a PDF file: their boxes and their pictures.
#pragma once

#include "codecs/pixels/PageProperties.h"

#include <QImage>

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

} // namespace paperline
