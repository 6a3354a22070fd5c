// Page sizes of PDF files, remembered as long as the file on disk stays the same.
#pragma once

#include "codecs/pixels/PageProperties.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace paperline {

// 0 x 0 when the path is no PDF file or has no such page.
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

// Measures pages for about as long as `budget`, at least one; the next call goes on from there.
LargestPageSize largestPdfPageSize(const std::string& path, std::chrono::milliseconds budget);

} // namespace paperline
