// Converts a page to the pixel order of BMP files while the file is already being written.
#pragma once

#include "codecs/bmp/BmpFile.h"

#include <atomic>
#include <cstdint>
#include <thread>

namespace paperline {

class BmpFilling {
public:
    // Swaps red and blue of 24-bit pixels in place and copies the rows into the block, in the order
    // of the file. A large page is filled by a thread: pixels and block must outlive this object,
    // and only what was awaited may be read.
    BmpFilling(BmpBlock& block, uint8_t* pixels);
    ~BmpFilling(); // waits until the block is filled
    BmpFilling(const BmpFilling&) = delete;
    BmpFilling& operator=(const BmpFilling&) = delete;

    // Returns when the first `rowBytes` bytes of the file's rows are filled, or all of them.
    void await(uint64_t rowBytes);
    void awaitAll() { await(block_.stride() * block_.fileRowCount()); }

private:
    void fill();
    void fillAsOne();

    BmpBlock& block_;
    uint8_t* pixels_;
    std::atomic<uint32_t> filledRows_{0}; // of the file
    std::thread helper_;
};

} // namespace paperline
