// Page boxes and pictures of a PDF file.
#pragma once

#include "codecs/pixels/PageProperties.h"

#include <QImage>

#include <memory>
#include <string>

class QPdfDocument;

namespace paperline {

// An open PDF file. A page's pixel size is its box at 72 dpi.
class PdfPages {
public:
    PdfPages();
    ~PdfPages();
    PdfPages(const PdfPages&) = delete;
    PdfPages& operator=(const PdfPages&) = delete;

    [[nodiscard]] bool open(const std::string& path);
    int count() const;
    PixelSize pixelSize(int pageIndex) const; // 0 x 0: no such page

    // The page on white, its longer side `longSidePixels` long. Null when there is no such page or
    // it cannot be drawn; damaged parts stay white.
    QImage draw(int pageIndex, int longSidePixels) const;

private:
    std::unique_ptr<QPdfDocument> document_;
};

} // namespace paperline
