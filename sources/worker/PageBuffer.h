// One page in shared memory, filled by the worker. The memory is a memfd that can grow but not
// shrink: reading beyond the end of a file that shrank would kill the application. It is reused for
// later pages.
#pragma once

#include "sources/worker/Protocol.h"
#include "sources/worker/ScanDevice.h"

#include <functional>

namespace paperline::sources {

class PageBuffer final : public PageSink {
public:
    // `progressed` is called whenever the device asks for room: a sign of life.
    explicit PageBuffer(std::function<void()> progressed) : progressed_(std::move(progressed)) {}
    ~PageBuffer() override;
    PageBuffer(const PageBuffer&) = delete;
    PageBuffer& operator=(const PageBuffer&) = delete;

    [[nodiscard]] bool begin(const PageFormat& format) override;
    std::span<uint8_t> rows(int32_t first, int32_t count) override;
    void finish(int32_t heightPixels) override;

    // Drops the page and keeps the memory.
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

// A memfd that cannot shrink; not open when the system refuses it.
Descriptor makeSharedMemory(const char* name, int64_t bytes);

} // namespace paperline::sources
