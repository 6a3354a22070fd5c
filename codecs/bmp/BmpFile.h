// Windows bitmap files, built byte by byte: header record, palette, rows bottom-up in BGR order.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace paperline {

// File header (14 bytes), information header (40) and room for 256 palette entries of 4 bytes.
inline constexpr size_t bmpHeaderRecordBytes = 1078;
using BmpHeaderRecord = std::array<uint8_t, bmpHeaderRecordBytes>;

// A page's pixels as the scanner delivered them: top row first, rows `bytesPerRow` apart.
struct BmpPageLayout {
    int32_t pixelsWide = 0;
    int32_t pixelsHigh = 0;
    int bitsPerPixel = 0;
    int64_t bytesPerRow = 0;
};

// Bytes of a file row: rows are padded to a multiple of four.
uint64_t bmpStride(int32_t pixelsWide, int bitsPerPixel);

// Headers and palette at the front of the file: 54 for 24 bits, 62 for 1, 1078 for 8.
uint32_t bmpPixelOffset(int bitsPerPixel);

// All fields little-endian, unused bytes zero. `bfSize` counts the 54 header bytes twice;
// resolutions are dpi x 39.37 in double precision, truncated.
BmpHeaderRecord makeBmpHeader(const BmpPageLayout& page, uint32_t xResDpi, uint32_t yResDpi);

// Bytes that the free-space test asks for.
int64_t bmpSpaceEstimate(const BmpPageLayout& page);

// Swaps the first and third byte of every three in each row, in place. When `bytesPerRow` is no
// multiple of three the last swap of a row reaches up to two bytes past its end, so the buffer must
// hold two bytes behind the last row.
void swapRedAndBlue(uint8_t* pixels, int32_t rows, int64_t bytesPerRow);

// Memory of a file's pixel rows, with room for the header record in front so that a whole file is
// one run of bytes.
class BmpBlock {
public:
    // stride x (rows + 10) x samples bytes; nothing when the product does not fit or the memory
    // cannot be had.
    [[nodiscard]] static std::optional<BmpBlock> allocate(const BmpPageLayout& page);

    // Copies the rows bottom-up, one block copy each. A row longer than the file's is cut short
    // only where the block ends.
    void copyRowsBottomUp(const uint8_t* pixels) { copyFileRows(pixels, 0, fileRowCount()); }

    // Of these, only so many rows of the file.
    void copyFileRows(const uint8_t* pixels, uint64_t firstFileRow, uint64_t count);
    uint64_t fileRowCount() const { return static_cast<uint64_t>(page_.pixelsHigh); }
    const BmpPageLayout& page() const { return page_; }
    uint64_t stride() const { return stride_; } // bytes from file row to file row

    uint8_t* rows() const { return memory_.get() + bmpHeaderRecordBytes; }

    // Puts the first `headerBytes` of the record before the rows and returns the whole file.
    std::span<const uint8_t> fileBytes(const BmpHeaderRecord& header, uint32_t headerBytes);

private:
    // Large memory waits for the next block.
    struct Release {
        size_t byteCount = 0;
        void operator()(uint8_t* memory) const noexcept;
    };
    BmpPageLayout page_;
    uint64_t stride_ = 0;
    uint64_t rowBytes_ = 0; // of the whole block behind the header
    std::unique_ptr<uint8_t[], Release> memory_{nullptr, {}};
};

// Frees the memory of the last large block, which is kept because the pages of a feeder are alike
// and fresh memory costs more than the copy into it. For the end of a batch; one thread only.
void freeSpareBmpMemory();

// Where the block's memory comes from; tests make it fail. Freed with std::free.
using BmpAllocator = void* (*)(size_t byteCount);
extern BmpAllocator bmpAllocator;

// Receives "writebmp: file open error\n"; null: standard output. The command line sets standard
// error, because its standard output carries only results.
extern std::FILE* bmpMessageStream;

// Prints the message above and gives the code that goes with it.
int32_t reportBmpOpenError();

struct BmpWriteResult {
    int32_t code = -1;     // 1, or -1 when the file cannot be opened
    bool complete = false; // every byte reached the file, which was closed without an error
};

// Opens the file for binary writing, writes `wInfoSize` bytes of the record and
// dwBmpWidthBytes x biHeight bytes of the buffer.
BmpWriteResult writebmp(const char* fileName,
                        const BmpHeaderRecord& hbmp,
                        uint32_t wInfoSize,
                        const uint8_t* buffer,
                        uint32_t dwBmpWidthBytes);

} // namespace paperline
