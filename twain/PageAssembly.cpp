#include "twain/PageAssembly.h"

#include "twain/records/TwainConstants.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace paperline {
namespace {

constexpr int32_t assumedDpi = 72;
// The BMP writer's channel swap may reach two bytes past the last row.
constexpr size_t bitmapSpareBytes = 2;
constexpr std::array<uint8_t, 3> stripMark{0x21, 0x85, 0xE9};

constexpr uint32_t emptyStripLimit = 100'000;
constexpr uint64_t timesARowMayCome = 64;
constexpr uint32_t emptyPageLimit = 10;
constexpr uint32_t cancelledPageLimit = 1'000;

bool sameLayout(const BitmapImageRep::Layout& one, const BitmapImageRep& other) {
    return one.pixelsWide == other.pixelsWide() && one.pixelsHigh == other.pixelsHigh() &&
           one.bitsPerSample == other.bitsPerSample() &&
           one.samplesPerPixel == other.samplesPerPixel() &&
           one.bitsPerPixel == other.bitsPerPixel() && one.bytesPerRow == other.bytesPerRow();
}

} // namespace

int32_t resolutionDpi(const TW_FIX32& resolution) {
    const int32_t dpi = resolution.Whole + (resolution.Frac != 0 ? 1 / resolution.Frac : 0);
    return dpi < 1 ? assumedDpi : dpi;
}

int32_t pageHeightAt300Dpi(int32_t heightPixels, int32_t horizontalDpi) {
    const int64_t height = int64_t{heightPixels} * 300 / std::max(horizontalDpi, 1);
    return static_cast<int32_t>(std::min<int64_t>(height, std::numeric_limits<int32_t>::max()));
}

std::optional<PageLayout> pageLayout(const TW_IMAGEINFO& info) {
    if (info.ImageWidth <= 0 || info.ImageLength <= 0 || info.SamplesPerPixel <= 0 ||
        info.BitsPerSample[0] <= 0 || info.BitsPerPixel <= 0 || info.BitsPerPixel > 64)
        return std::nullopt;
    const int64_t width = info.ImageWidth;
    const int64_t bytesPerLine =
        info.BitsPerPixel == 1 ? (width + 7) / 8 : width * info.SamplesPerPixel;
    const int64_t packedBytes = (width * info.BitsPerPixel + 7) / 8;
    if (bytesPerLine < packedBytes || bytesPerLine > std::numeric_limits<int32_t>::max())
        return std::nullopt;
    const auto byteCount =
        static_cast<uint64_t>(bytesPerLine) * static_cast<uint64_t>(info.ImageLength);
    if (byteCount > std::numeric_limits<uint32_t>::max())
        return std::nullopt;

    PageLayout layout;
    layout.bitmap = {.pixelsWide = info.ImageWidth,
                     .pixelsHigh = info.ImageLength,
                     .bitsPerSample = info.BitsPerSample[0],
                     .samplesPerPixel = info.SamplesPerPixel,
                     .bitsPerPixel = info.BitsPerPixel,
                     .bytesPerRow = bytesPerLine};
    layout.bytesPerLine = static_cast<int32_t>(bytesPerLine);
    layout.transferBytes = byteCount;
    return layout;
}

bool PageBuffers::preparePage(const PageLayout& layout) {
    // The memory that took the last page has no page faults left, the other one may.
    if (swapped_ && bitmap_.use_count() == 1)
        bitmap_->swapPixels(buffer_);
    swapped_ = false;
    // A bitmap that is still in use (a thumbnail being made) is left to its user.
    if (!bitmap_ || bitmap_.use_count() > 1 || !sameLayout(layout.bitmap, *bitmap_)) {
        bitmap_.reset();
        bitmap_ = BitmapImageRep::make(layout.bitmap, bitmapSpareBytes);
    }
    if (!bitmap_)
        return false;
    bitmap_->setSize({static_cast<double>(layout.bitmap.pixelsWide),
                      static_cast<double>(layout.bitmap.pixelsHigh)});

    const auto needed = static_cast<size_t>(layout.transferBytes);
    if (needed > capacity_) {
        buffer_.reset(); // before the new one, so that memory for both is not needed
        capacity_ = 0;
        buffer_ = allocatePageMemory(needed + bitmapSpareBytes);
        if (!buffer_)
            return false;
        capacity_ = needed;
    }
    usedBytes_ = needed;
    layout_ = layout;
    filledRows_.assign(static_cast<size_t>(layout.bitmap.pixelsHigh), false);
    return true;
}

TW_IMAGEMEMXFER PageBuffers::stripRecord() {
    TW_IMAGEMEMXFER record{};
    record.Compression = twain::TWON_DONTCARE16;
    record.BytesPerRow = twain::TWON_DONTCARE32;
    record.Columns = twain::TWON_DONTCARE32;
    record.Rows = twain::TWON_DONTCARE32;
    record.XOffset = twain::TWON_DONTCARE32;
    record.YOffset = twain::TWON_DONTCARE32;
    record.BytesWritten = twain::TWON_DONTCARE32;
    record.Memory.Flags = twain::TWMF_APPOWNS | twain::TWMF_POINTER;
    record.Memory.Length = static_cast<uint32_t>(usedBytes_);
    record.Memory.TheMem = buffer_.get();
    return record;
}

void PageBuffers::markStrip() {
    std::copy_n(
        stripMark.begin(), std::min(stripMark.size(), usedBytes_), transferBuffer().begin());
}

PageBuffers::CopiedRows PageBuffers::copyStrip(const TW_IMAGEMEMXFER& strip) {
    CopiedRows copied;
    const auto height = static_cast<uint32_t>(layout_.bitmap.pixelsHigh);
    if (!bitmap_ || strip.YOffset >= height)
        return copied;
    const uint32_t rows = std::min(strip.Rows, height - strip.YOffset);
    const auto lineBytes = static_cast<uint64_t>(layout_.bytesPerLine);
    const std::span<uint8_t> page = bitmap_->bitmapData();
    const uint64_t stripBytes = rows * lineBytes;
    if (strip.BytesPerRow == lineBytes && stripBytes <= usedBytes_) {
        // The lines are laid out as in the page: a whole page is swapped, not copied.
        if (rows == height) {
            bitmap_->swapPixels(buffer_);
            swapped_ = !swapped_;
            capacity_ = usedBytes_;
        } else {
            std::memcpy(page.data() + strip.YOffset * lineBytes, buffer_.get(), stripBytes);
        }
        std::fill_n(filledRows_.begin() + strip.YOffset, rows, true);
        return {rows, stripBytes};
    }
    for (uint32_t row = 0; row < rows; ++row) {
        const uint64_t from = uint64_t{row} * strip.BytesPerRow;
        if (from >= usedBytes_)
            break;
        const auto count = static_cast<size_t>(std::min(lineBytes, usedBytes_ - from));
        const size_t y = size_t{strip.YOffset} + row;
        uint8_t* line = page.data() + y * lineBytes;
        std::memcpy(line, buffer_.get() + from, count);
        if (count < lineBytes && !filledRows_[y])
            std::memset(line + count, 0, static_cast<size_t>(lineBytes) - count);
        filledRows_[y] = true;
        copied.bytes += count;
        ++copied.rows;
    }
    return copied;
}

void PageBuffers::finishPage() {
    const auto lineBytes = static_cast<size_t>(layout_.bytesPerLine);
    for (size_t y = 0; y < filledRows_.size(); ++y) {
        if (!filledRows_[y])
            std::memset(bitmap_->bitmapData().data() + y * lineBytes, 0, lineBytes);
    }
}

StripGuard::StripGuard(int32_t heightPixels)
    : remainingStrips_(2 * static_cast<uint64_t>(std::max(heightPixels, 0)) + emptyStripLimit),
      remainingRows_(timesARowMayCome * static_cast<uint64_t>(std::max(heightPixels, 0))) {}

bool StripGuard::admits(uint32_t copiedRows) {
    emptyStrips_ = copiedRows == 0 ? emptyStrips_ + 1 : 0;
    if (remainingStrips_ == 0 || remainingRows_ < copiedRows || emptyStrips_ >= emptyStripLimit)
        return false;
    --remainingStrips_;
    remainingRows_ -= copiedRows;
    return true;
}

bool PageGuard::admits(bool hasRows, bool cancelled) {
    cancelledPages_ = cancelled ? cancelledPages_ + 1 : 0;
    emptyPages_ = !hasRows && !cancelled ? emptyPages_ + 1 : 0;
    return emptyPages_ < emptyPageLimit && cancelledPages_ < cancelledPageLimit;
}

} // namespace paperline
