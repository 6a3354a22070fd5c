// PNG row filters chosen for pages with a scanner's noise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace paperline {

// Filters the rows of one image with Average or Paeth, whichever leaves the smaller differences.
class PngRowFilter {
public:
    PngRowFilter(size_t rowBytes, size_t pixelBytes);

    // `above` is empty for the first row. `target` has room for the filter's number and the row.
    void filter(std::span<const uint8_t> row, std::span<const uint8_t> above, uint8_t* target);

private:
    size_t rowBytes_;
    size_t pixelBytes_;
    std::vector<uint8_t> noRow_; // zeros, above the first row
    std::vector<uint8_t> average_;
};

} // namespace paperline
