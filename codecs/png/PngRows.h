// Rows as PNG stores them: differences to their neighbours, chosen for pages with a scanner's
// noise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace paperline {

// Filters the rows of one image, top row first. Each row is written as its filter's number and the
// differences to the average, or to the Paeth prediction, of its neighbours: whichever leaves less.
class PngRowFilter {
public:
    PngRowFilter(size_t rowBytes, size_t pixelBytes);

    // `above` is the row before, empty for the image's first. `target` has room for 1 + rowBytes.
    void filter(std::span<const uint8_t> row, std::span<const uint8_t> above, uint8_t* target);

private:
    size_t rowBytes_;
    size_t pixelBytes_;
    std::vector<uint8_t> noRow_; // what stands above the first row
    std::vector<uint8_t> average_;
};

} // namespace paperline
