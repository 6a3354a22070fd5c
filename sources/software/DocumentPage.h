// A sheet of an office report, drawn in any size, resolution and depth.
#pragma once

#include "sources/framework/ScanTypes.h"
#include "sources/software/Drawing.h"

#include <cstdint>
#include <span>
#include <vector>

namespace paperline::sources {

// Paints one page after the other of a batch. Text and pictures are laid out once.
class DocumentPainter {
public:
    // `format` has a known height.
    explicit DocumentPainter(const PageFormat& format);

    void setPage(int pageNumber, int pageCount);
    // Fills whole rows from `firstRow` on, packed as the format says. Grey and colour pages carry
    // the noise of a scanner's sensor, the same in every run.
    void paintRows(int32_t firstRow, std::span<uint8_t> rows);

private:
    void paintBand(int32_t firstRow, std::span<uint8_t> pixels) const;

    PageFormat format_;
    double reportDpi_; // at which the report is as wide as the page
    Drawing drawing_;
    size_t commonItems_;            // of the drawing; the footer follows
    std::vector<uint8_t> greyBand_; // of a black and white page
};

} // namespace paperline::sources
