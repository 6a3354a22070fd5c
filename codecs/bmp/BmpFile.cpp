#include "codecs/bmp/BmpFile.h"

#include "codecs/bmp/BmpHeader.h"
#include "codecs/bmp/ChannelSwap.h"
#include "platform/files/Descriptor.h"
#include "platform/files/FileContent.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace paperline {

namespace {

constexpr double inchesPerMetre = 39.37;
constexpr uint64_t spareRows = 10;

uint64_t samplesOf(int bitsPerPixel) {
    return bitsPerPixel == 24 ? 3 : 1;
}

// Shift counts wrap at 32, so 32 bits a pixel have one entry.
uint64_t paletteEntries(int bitsPerPixel) {
    return bitsPerPixel == 24 ? 0 : uint64_t{1} << (static_cast<unsigned>(bitsPerPixel) % 32);
}

// The memory of the last large block.
PageMemory spareMemory;

// The spare memory if it has that size; it is freed before other memory is allocated.
PageMemory takeSpareMemory(size_t byteCount) {
    if (spareMemory.get_deleter().mappedBytes != byteCount)
        spareMemory.reset();
    return std::exchange(spareMemory, {});
}

class RecordWriter {
public:
    explicit RecordWriter(std::span<uint8_t> record) : record_(record) {}
    void word(BmpField field, int value) {
        writeInteger(record_.subspan(field), std::endian::little, static_cast<uint16_t>(value));
    }
    void doubleWord(BmpField field, uint64_t value) {
        writeInteger(record_.subspan(field), std::endian::little, static_cast<uint32_t>(value));
    }
    void greyEntry(size_t index, uint8_t level) {
        std::ranges::fill(record_.subspan(bmpHeaderBytes + 4 * index, 3), level);
    }

private:
    std::span<uint8_t> record_;
};

void fillPalette(RecordWriter& fields, int bitsPerPixel) {
    if (bitsPerPixel == 1)
        fields.greyEntry(1, 0xFF);
    if (bitsPerPixel != 8)
        return;
    for (size_t level = 0; level < 256; ++level)
        fields.greyEntry(level, static_cast<uint8_t>(level));
}

uint32_t pelsPerMetre(uint32_t dpi) {
    const double product = dpi * inchesPerMetre;
    return product < 4294967296.0 ? static_cast<uint32_t>(product) : UINT32_MAX;
}

uint32_t heightOf(const BmpHeaderRecord& header) {
    return readInteger<uint32_t>(std::span(header).subspan(biHeight), std::endian::little);
}

// Like "wb", but never through a link that another user put into a shared folder.
std::FILE* openForBinaryWriting(const char* fileName) {
    Descriptor file = openForWriting(fileName);
    std::FILE* stream = file.isOpen() ? ::fdopen(file.number(), "wb") : nullptr;
    if (stream != nullptr)
        (void)file.release();
    return stream;
}

} // namespace

BmpAllocator bmpAllocator = allocatePageMemory;
std::FILE* bmpMessageStream = nullptr;

uint64_t bmpStride(int32_t pixelsWide, int bitsPerPixel) {
    return (static_cast<uint64_t>(pixelsWide) * static_cast<uint64_t>(bitsPerPixel) + 31) / 32 * 4;
}

uint32_t bmpPixelOffset(int bitsPerPixel) {
    return static_cast<uint32_t>(bmpHeaderBytes + 4 * paletteEntries(bitsPerPixel));
}

BmpHeaderRecord makeBmpHeader(const BmpPageLayout& page, uint32_t xResDpi, uint32_t yResDpi) {
    const uint64_t imageBytes =
        bmpStride(page.pixelsWide, page.bitsPerPixel) * static_cast<uint64_t>(page.pixelsHigh);
    const uint32_t pixelOffset = bmpPixelOffset(page.bitsPerPixel);
    const uint64_t coloursUsed = page.bitsPerPixel == 1 ? 2 : page.bitsPerPixel == 8 ? 256 : 0;

    BmpHeaderRecord record{};
    RecordWriter fields(record);
    fields.word(bfType, 0x4D42);
    fields.doubleWord(bfSize, bmpHeaderBytes + uint64_t{pixelOffset} + imageBytes);
    fields.doubleWord(bfOffBits, pixelOffset);
    fields.doubleWord(biSize, bmpInfoHeaderBytes);
    fields.doubleWord(biWidth, static_cast<uint32_t>(page.pixelsWide));
    fields.doubleWord(biHeight, static_cast<uint32_t>(page.pixelsHigh));
    fields.word(biPlanes, 1);
    fields.word(biBitCount, page.bitsPerPixel);
    fields.doubleWord(biSizeImage, imageBytes);
    fields.doubleWord(biXPelsPerMeter, pelsPerMetre(xResDpi));
    fields.doubleWord(biYPelsPerMeter, pelsPerMetre(yResDpi));
    fields.doubleWord(biClrUsed, coloursUsed);
    fields.doubleWord(biClrImportant, page.bitsPerPixel == 1 ? 2 : 0);
    fillPalette(fields, page.bitsPerPixel);
    return record;
}

int64_t bmpSpaceEstimate(const BmpPageLayout& page) {
    return static_cast<int64_t>(page.pixelsWide) *
           (static_cast<int64_t>(page.pixelsHigh) + static_cast<int64_t>(spareRows)) *
           static_cast<int64_t>(samplesOf(page.bitsPerPixel));
}

void swapRedAndBlue(uint8_t* pixels, int32_t rows, int64_t bytesPerRow) {
    if (pixels == nullptr || rows <= 0 || bytesPerRow <= 0)
        return;
    const auto stride = static_cast<size_t>(bytesPerRow);
    if (stride % 3 == 0) { // rows of whole pixels: the page is one run
        swapFirstAndThird(pixels, stride / 3 * static_cast<size_t>(rows));
        return;
    }
    for (size_t y = 0; y < static_cast<size_t>(rows); ++y)
        swapFirstAndThird(pixels + y * stride, stride / 3 + 1);
}

void BmpBlock::Release::operator()(uint8_t* bytes) const noexcept {
    PageMemory memory(bytes, pageMemory);
    if (pageMemory.mappedBytes != 0) // large
        spareMemory = std::move(memory);
}

void freeSpareBmpMemory() {
    spareMemory.reset();
}

std::optional<BmpBlock> BmpBlock::allocate(const BmpPageLayout& page) {
    if (page.pixelsWide <= 0 || page.pixelsHigh <= 0 || page.bytesPerRow <= 0)
        return std::nullopt;
    BmpBlock block;
    block.page_ = page;
    block.stride_ = bmpStride(page.pixelsWide, page.bitsPerPixel);
    uint64_t total = 0;
    const uint64_t rows = static_cast<uint64_t>(page.pixelsHigh) + spareRows;
    if (__builtin_mul_overflow(block.stride_, rows, &block.rowBytes_) ||
        __builtin_mul_overflow(block.rowBytes_, samplesOf(page.bitsPerPixel), &block.rowBytes_) ||
        __builtin_add_overflow(block.rowBytes_, bmpHeaderRecordBytes, &total) ||
        total > static_cast<uint64_t>(PTRDIFF_MAX))
        return std::nullopt;
    const auto byteCount = static_cast<size_t>(total);
    PageMemory memory = takeSpareMemory(byteCount);
    if (!memory)
        memory = bmpAllocator(byteCount);
    if (!memory)
        return std::nullopt;
    const FreePageMemory freePageMemory = memory.get_deleter();
    block.memory_ = {memory.release(), {freePageMemory}};
    return block;
}

void BmpBlock::copyFileRows(const uint8_t* pixels, uint64_t firstFileRow, uint64_t count) {
    const auto rowLength = static_cast<uint64_t>(page_.bytesPerRow);
    const uint64_t rowCount = fileRowCount();
    for (uint64_t fileRow = firstFileRow; fileRow < firstFileRow + count; ++fileRow) {
        const uint64_t offset = fileRow * stride_;
        const uint64_t length = std::min(rowLength, rowBytes_ - offset);
        uint8_t* target = rows() + offset;
        std::memcpy(target, pixels + (rowCount - 1 - fileRow) * rowLength, length);
        if (length < stride_) // padding: reused memory holds an earlier page
            std::memset(target + length, 0, stride_ - length);
    }
}

std::span<const uint8_t> BmpBlock::fileBytes(const BmpHeaderRecord& header, uint32_t headerLength) {
    const size_t length = std::min(static_cast<size_t>(headerLength), header.size());
    uint8_t* start = rows() - length;
    std::memcpy(start, header.data(), length);
    return {start, length + static_cast<size_t>(stride_ * static_cast<uint64_t>(page_.pixelsHigh))};
}

int32_t reportBmpOpenError() {
    std::FILE* stream = bmpMessageStream != nullptr ? bmpMessageStream : stdout;
    (void)std::fputs("writebmp: file open error\n", stream);
    (void)std::fflush(stream);
    return -1;
}

BmpWriteResult writebmp(const char* fileName,
                        const BmpHeaderRecord& hbmp,
                        uint32_t wInfoSize,
                        const uint8_t* buffer,
                        uint32_t dwBmpWidthBytes) {
    std::FILE* file = openForBinaryWriting(fileName);
    if (file == nullptr)
        return {reportBmpOpenError(), false};
    const size_t headerLength = std::min(static_cast<size_t>(wInfoSize), hbmp.size());
    const size_t pixelBytes = static_cast<size_t>(dwBmpWidthBytes) * heightOf(hbmp);
    bool complete = std::fwrite(hbmp.data(), 1, headerLength, file) == headerLength;
    complete &= std::fwrite(buffer, 1, pixelBytes, file) == pixelBytes;
    complete &= std::fclose(file) == 0;
    return {1, complete};
}

} // namespace paperline
