// Takes pages into plain memory.
#pragma once

#include "sources/worker/ScanDevice.h"

#include <vector>

namespace paperline::sources {

class MemorySink : public PageSink {
public:
    bool begin(const PageFormat& wanted) override {
        format = wanted;
        finishedRows = -1;
        bytes.assign(static_cast<size_t>(wanted.bytesPerRow() * wanted.heightPixels), 0x55);
        return !refuse;
    }
    std::span<uint8_t> rows(int32_t first, int32_t count) override {
        if (first >= failFromRow)
            return {};
        return std::span(bytes).subspan(static_cast<size_t>(first * format.bytesPerRow()),
                                        static_cast<size_t>(count * format.bytesPerRow()));
    }
    void finish(int32_t heightPixels) override { finishedRows = heightPixels; }

    PageFormat format;
    std::vector<uint8_t> bytes;
    int32_t finishedRows = -1;
    bool refuse = false;
    int32_t failFromRow = INT32_MAX;
};

} // namespace paperline::sources
