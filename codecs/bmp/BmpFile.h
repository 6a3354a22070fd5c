// Windows bitmap files as this program writes them: headers, palette, rows bottom-up in BGR order.
#pragma once

#include "codecs/pixels/PageMemory.h"

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

// A page as the scanner delivers it: top row first, rows `bytesPerRow` apart.
struct BmpPageLayout {
    int32_t pixelsWide = 0;
    int32_t pixelsHigh = 0;
    int bitsPerPixel = 0;
    int64_t bytesPerRow = 0;
};

// Bytes of a row in the file, padded to a multiple of four.
uint64_t bmpStride(int32_t pixelsWide, int bitsPerPixel);

// Bytes of headers and palette: 54 for 24 bits, 62 for 1, 1078 for 8.
uint32_t bmpPixelOffset(int bitsPerPixel);

// Unused bytes are zero. `bfSize` counts the 54 header bytes twice on purpose; resolutions are
// dpi x 39.37 in double precision, truncated.
BmpHeaderRecord makeBmpHeader(const BmpPageLayout& page, uint32_t xResDpi, uint32_t yResDpi);

// Bytes that must be free on the disk.
int64_t bmpSpaceEstimate(const BmpPageLayout& page);

// Swaps the first and third byte of every three in each row, in place. When `bytesPerRow` is not a
// multiple of three, the last swap of a row reaches up to two bytes past its end: the buffer needs
// two bytes after the last row.
void swapRedAndBlue(uint8_t* pixels, int32_t rows, int64_t bytesPerRow);

// A file in memory: room for the header record, directly followed by the pixel rows.
class BmpBlock {
public:
    // stride x (rows + 10) x samples bytes; nothing when that overflows or memory runs out.
    [[nodiscard]] static std::optional<BmpBlock> allocate(const BmpPageLayout& page);

    // Copies the page's rows bottom-up. A row longer than a file row runs into the next one, which
    // is copied after it; only at the end of the block it is cut.
    void copyRowsBottomUp(const uint8_t* pixels) { copyFileRows(pixels, 0, fileRowCount()); }

    // The same for `count` file rows; `pixels` is the whole page.
    void copyFileRows(const uint8_t* pixels, uint64_t firstFileRow, uint64_t count);
    uint64_t fileRowCount() const { return static_cast<uint64_t>(page_.pixelsHigh); }
    const BmpPageLayout& page() const { return page_; }
    uint64_t stride() const { return stride_; } // bytes of a file row

    uint8_t* rows() const { return memory_.get() + bmpHeaderRecordBytes; }

    // Puts the first `headerBytes` bytes of the record before the rows and returns the whole file.
    std::span<const uint8_t> fileBytes(const BmpHeaderRecord& header, uint32_t headerBytes);

private:
    // Keeps large memory for the next block.
    struct Release {
        FreePageMemory pageMemory;
        void operator()(uint8_t* bytes) const noexcept;
    };
    BmpPageLayout page_;
    uint64_t stride_ = 0;
    uint64_t rowBytes_ = 0; // of all rows, spare ones included
    std::unique_ptr<uint8_t[], Release> memory_{nullptr, {}};
};

// Frees the memory of the last large block, which the next block of the same size would reuse: page
// faults in fresh memory cost more than the copy into it. Call it at the end of a batch, on the
// thread that allocates blocks.
void freeSpareBmpMemory();

// Where a block's memory comes from; tests replace it.
using BmpAllocator = PageMemory (*)(size_t byteCount);
extern BmpAllocator bmpAllocator;

// Where "writebmp: file open error\n" is printed; null: standard output. The command line sets
// standard error, because its standard output carries only results.
extern std::FILE* bmpMessageStream;

// Prints that message and returns -1.
int32_t reportBmpOpenError();

struct BmpWriteResult {
    int32_t code = -1;     // 1, or -1 when the file cannot be opened
    bool complete = false; // every byte was written and the file closed without an error
};

// Writes `wInfoSize` bytes of the record and dwBmpWidthBytes x biHeight bytes of the buffer.
BmpWriteResult writebmp(const char* fileName,
                        const BmpHeaderRecord& hbmp,
                        uint32_t wInfoSize,
                        const uint8_t* buffer,
                        uint32_t dwBmpWidthBytes);

} // namespace paperline
