// Brings a page's pixels into its file's order while the file is already being written.
#pragma once

#include "codecs/bmp/BmpFile.h"

#include <atomic>
#include <cstdint>
#include <thread>

namespace paperline {

class BmpFilling {
public:
    // Exchanges red and blue of 24-bit pixels, in place, and copies the rows into the block, those
    // that come first in the file first. A large page is filled by a thread of its own: pixels and
    // block must stay, and be left alone where they are not awaited, until this object ends.
    BmpFilling(BmpBlock& block, uint8_t* pixels);
    ~BmpFilling(); // waits for the end
    BmpFilling(const BmpFilling&) = delete;
    BmpFilling& operator=(const BmpFilling&) = delete;

    // Returns when so many bytes of the file's rows are there, or all are.
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
