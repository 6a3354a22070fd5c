#include "codecs/bmp/BmpFilling.h"

#include <algorithm>
#include <exception>

namespace paperline {

namespace {

constexpr uint64_t worthAThread = uint64_t{2} << 20; // bytes of pixels
constexpr uint64_t bandBytes = 128 * 1024;           // fits the processor's cache

// False when a swap reaches past the end of a row, or a copy past that of a file row: then the
// order of the rows matters.
bool rowsAreIndependent(const BmpPageLayout& page, uint64_t stride) {
    return (page.bitsPerPixel != 24 || page.bytesPerRow % 3 == 0) &&
           static_cast<uint64_t>(page.bytesPerRow) <= stride;
}

} // namespace

BmpFilling::BmpFilling(BmpBlock& block, uint8_t* pixels) : block_(block), pixels_(pixels) {
    if (!rowsAreIndependent(block.page(), block.stride())) {
        fillAsOne();
        return;
    }
    if (block.stride() * block.fileRowCount() >= worthAThread) {
        try {
            helper_ = std::thread([this] { fill(); });
            return;
        } catch (const std::exception&) {
            // No thread or no memory for one: fill() runs here.
        }
    }
    fill();
}

BmpFilling::~BmpFilling() {
    if (helper_.joinable())
        helper_.join();
}

void BmpFilling::await(uint64_t rowBytes) {
    const uint64_t wanted =
        std::min((rowBytes + block_.stride() - 1) / block_.stride(), block_.fileRowCount());
    for (uint32_t filled = filledRows_.load(std::memory_order_acquire); filled < wanted;
         filled = filledRows_.load(std::memory_order_acquire))
        filledRows_.wait(filled, std::memory_order_acquire);
}

void BmpFilling::fill() {
    const BmpPageLayout& page = block_.page();
    const uint64_t rowCount = block_.fileRowCount();
    const auto rowLength = static_cast<uint64_t>(page.bytesPerRow);
    const uint64_t bandRows = std::max<uint64_t>(1, bandBytes / block_.stride());
    for (uint64_t row = 0; row < rowCount;) {
        const uint64_t count = std::min(bandRows, rowCount - row);
        if (page.bitsPerPixel == 24)
            swapRedAndBlue(pixels_ + (rowCount - row - count) * rowLength,
                           static_cast<int32_t>(count),
                           page.bytesPerRow);
        block_.copyFileRows(pixels_, row, count);
        row += count;
        // seq_cst: pairs with the wait; release could lose a wake-up.
        filledRows_.store(static_cast<uint32_t>(row));
        filledRows_.notify_one();
    }
}

void BmpFilling::fillAsOne() {
    if (block_.page().bitsPerPixel == 24)
        swapRedAndBlue(pixels_, block_.page().pixelsHigh, block_.page().bytesPerRow);
    block_.copyRowsBottomUp(pixels_);
    filledRows_.store(static_cast<uint32_t>(block_.fileRowCount()), std::memory_order_release);
}

} // namespace paperline
