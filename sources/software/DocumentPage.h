// Pages of an office report, drawn in any size, resolution and depth.
#pragma once

#include "sources/framework/ScanTypes.h"
#include "sources/software/Drawing.h"

#include <cstdint>
#include <span>
#include <vector>

namespace paperline::sources {

// Paints the pages of a batch; their common content is laid out once.
class DocumentPainter {
public:
    // `format` has a known height.
    explicit DocumentPainter(const PageFormat& format);

    void setPage(int pageNumber, int pageCount);
    // Fills whole rows from `firstRow` on. Grey and colour pages carry the noise of a sensor, the
    // same in every run.
    void paintRows(int32_t firstRow, std::span<uint8_t> rows);

private:
    void paintBand(int32_t firstRow, std::span<uint8_t> pixels) const;

    PageFormat format_;
    double reportDpi_; // makes the report as wide as the page
    Drawing drawing_;
    size_t commonItems_;            // in the drawing, without the footer
    std::vector<uint8_t> greyBand_; // before its pixels become bits
};

} // namespace paperline::sources
