// One page in shared memory, as the worker fills it. The memory is a memfd that can grow and never
// shrink, so that the data source may look at it without fear of its end moving; it is used again
// for later pages.
#pragma once

#include "sources/worker/Protocol.h"
#include "sources/worker/ScanDevice.h"

#include <functional>

namespace paperline::sources {

class PageBuffer final : public PageSink {
public:
    // `progressed` is called whenever the device asks for room, so that the reader is known to
    // live.
    explicit PageBuffer(std::function<void()> progressed) : progressed_(std::move(progressed)) {}
    ~PageBuffer() override;
    PageBuffer(const PageBuffer&) = delete;
    PageBuffer& operator=(const PageBuffer&) = delete;

    [[nodiscard]] bool begin(const PageFormat& format) override;
    std::span<uint8_t> rows(int32_t first, int32_t count) override;
    void finish(int32_t heightPixels) override;

    // Forgets the page; the memory stays.
    void clear() { whole_ = false; }
    bool isWhole() const { return whole_; }
    const PageFormat& format() const { return format_; } // with the true height once whole
    int descriptor() const { return memory_.number(); }

private:
    [[nodiscard]] bool reserve(int64_t bytes);

    std::function<void()> progressed_;
    Descriptor memory_;
    uint8_t* start_ = nullptr;
    int64_t mappedBytes_ = 0;
    PageFormat format_;
    bool whole_ = false;
};

// A memfd of so many bytes that cannot shrink; not open when there is none to be had.
Descriptor makeSharedMemory(const char* name, int64_t bytes);

} // namespace paperline::sources
