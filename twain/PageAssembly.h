// Puts a page together: its layout from the source's image information, its rows from the strips.
// No number of the source is trusted.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"
#include "twain/records/TwainTypes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace paperline {

// The whole part, plus 1 (on purpose) if the fraction is exactly 1. Less than 1 dpi counts as 72.
int32_t resolutionDpi(const TW_FIX32& resolution);

// The page's height in pixels if its horizontal resolution were 300 dpi, at most INT32_MAX.
int32_t pageHeightAt300Dpi(int32_t heightPixels, int32_t horizontalDpi);

inline constexpr int32_t highResolutionDpi = 301; // and more

struct PageLayout {
    BitmapImageRep::Layout bitmap;
    int32_t bytesPerLine = 0;
    uint64_t transferBytes = 0; // one buffer for the whole page
};

// Nothing when a number is not positive, when a line of one byte per sample (at 1 bit per pixel: of
// whole bytes) is too short for its pixels, as with 16 bits per sample, or when the page has more
// bytes than a transfer record's 32-bit length can say. The polarity of lineart is not looked at:
// the source's bits are taken as they come, and 0 is black.
[[nodiscard]] std::optional<PageLayout> pageLayout(const TW_IMAGEINFO& info);

// One transfer buffer and one bitmap, used again for the next page of the same size: new memory
// costs a page fault per 4 KiB.
class PageBuffers {
public:
    // Undefined contents: of the buffer always, of the bitmap until finishPage(). False: no memory.
    [[nodiscard]] bool preparePage(const PageLayout& layout);

    std::span<uint8_t> transferBuffer() { return {buffer_.get(), usedBytes_}; }
    const std::shared_ptr<BitmapImageRep>& bitmap() const { return bitmap_; }

    // A record that asks for the next strip.
    TW_IMAGEMEMXFER stripRecord();

    // Writes the fixed mark over the start of the strip, on purpose.
    void markStrip();

    struct CopiedRows {
        uint32_t rows = 0;
        uint64_t bytes = 0;
    };
    // Copies the rows of the strip that are inside the page and the buffer; its lines may be
    // shorter or longer than the page's. For a strip that is the whole page, bitmap and buffer swap
    // their memory instead, which invalidates pointers into them.
    CopiedRows copyStrip(const TW_IMAGEMEMXFER& strip);

    // Clears the rows that no strip has filled.
    void finishPage();

private:
    PageLayout layout_;
    PageMemory buffer_;
    size_t capacity_ = 0;
    size_t usedBytes_ = 0;
    bool swapped_ = false; // an odd number of times since preparePage
    std::shared_ptr<BitmapImageRep> bitmap_;
    std::vector<bool> filledRows_;
};

// Ends the loop over strips of a broken source.
class StripGuard {
public:
    explicit StripGuard(int32_t heightPixels);
    // Counts one strip. False after 100,000 strips more than twice the page's rows, after 100,000
    // strips in a row without rows, and when every row could have come 64 times.
    [[nodiscard]] bool admits(uint32_t copiedRows);

private:
    uint64_t remainingStrips_;
    uint64_t remainingRows_;
    uint32_t emptyStrips_ = 0;
};

// Ends the loop over pages of a broken source.
class PageGuard {
public:
    // Counts one page. False after 10 pages in a row without rows or 1,000 cancelled ones.
    [[nodiscard]] bool admits(bool hasRows, bool cancelled);

private:
    uint32_t emptyPages_ = 0;
    uint32_t cancelledPages_ = 0;
};

} // namespace paperline
