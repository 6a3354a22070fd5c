// Makes one page out of what a data source says and delivers: its layout from the image
// information, its buffers, and its rows from strips. Every number of the source is hostile.
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

// Dots per inch as the application reads them: the whole part, and one more when the fraction is
// exactly 1. The rounding is deliberate. Below 1 counts as 72.
int32_t resolutionDpi(const TW_FIX32& resolution);

// Height in pixels that the page would have at 300 dpi horizontally, at most INT32_MAX.
int32_t pageHeightAt300Dpi(int32_t heightPixels, int32_t horizontalDpi);

inline constexpr int32_t highResolutionDpi = 301; // from here on a scan counts as high-resolution

struct PageLayout {
    BitmapImageRep::Layout bitmap;
    int32_t bytesPerLine = 0;
    uint64_t transferBytes = 0; // one buffer for the whole page
};

// Layout of the page. Nothing when a number is not positive, when a line of width x samples bytes
// (whole bytes of bits at 1 bit per pixel) does not hold its pixels, as with 16 bits a sample, or
// when the page's size is more than a transfer record's 32-bit length can say.
[[nodiscard]] std::optional<PageLayout> pageLayout(const TW_IMAGEINFO& info);

// One transfer buffer and one bitmap, taken again for the next page of the same size: the pages of
// a feeder are alike, and a fresh buffer costs a page fault every 4 KiB.
class PageBuffers {
public:
    // Contents of the transfer buffer are undefined, the bitmap's too until finishPage. False: no
    // memory.
    [[nodiscard]] bool preparePage(const PageLayout& layout);

    std::span<uint8_t> transferBuffer() { return {buffer_.get(), usedBytes_}; }
    const std::shared_ptr<BitmapImageRep>& bitmap() const { return bitmap_; }

    // A fresh record for the next strip: everything "not asked for" but the buffer.
    TW_IMAGEMEMXFER stripRecord();

    // The fixed mark that every strip carries at its start, whatever the source wrote there.
    void markStrip();

    struct CopiedRows {
        uint32_t rows = 0;
        uint64_t bytes = 0;
    };
    // Copies the strip's rows that lie inside the page and inside the buffer. Each row takes
    // bytes-per-line bytes; lines of the strip lie its BytesPerRow apart, shorter or longer. A
    // strip that is the whole page is not copied: bitmap and buffer exchange their memory, so that
    // pointers into them are good only until the next call.
    CopiedRows copyStrip(const TW_IMAGEMEMXFER& strip);

    // Clears what no strip has filled, so that nothing of an earlier page shows through.
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

// Ends loops that a broken source would never end.
class StripGuard {
public:
    explicit StripGuard(int32_t heightPixels);
    // Counts one strip. False when the source has delivered more than any device would: twice as
    // many strips as the page has rows and 100,000 more, 100,000 strips without a row one after the
    // other, or every row 64 times.
    [[nodiscard]] bool admits(uint32_t copiedRows);

private:
    uint64_t remainingStrips_;
    uint64_t remainingRows_;
    uint32_t emptyStrips_ = 0;
};

class PageGuard {
public:
    // Counts one page that the source ended. False when 10 pages without a single row came one
    // after the other, or 1,000 cancelled ones: there is no paper behind such pages.
    [[nodiscard]] bool admits(bool hasRows, bool cancelled);

private:
    uint32_t emptyPages_ = 0;
    uint32_t cancelledPages_ = 0;
};

} // namespace paperline
