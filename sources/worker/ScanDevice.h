// A device in its worker program. The software scanner and SANE devices implement it; the worker
// server (WorkerServer.h) calls it and passes its pages to the data source.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace paperline::sources {

// Where a page goes while it is read: shared memory (PageBuffer.h), or memory of a test.
class PageSink {
public:
    virtual ~PageSink() = default;
    // Starts a page. heightPixels -1: the sink grows as rows are asked for.
    [[nodiscard]] virtual bool begin(const PageFormat& format) = 0;
    // Writable room for `count` rows from row `first` on; empty when there is no memory for them.
    virtual std::span<uint8_t> rows(int32_t first, int32_t count) = 0;
    // The page is complete.
    virtual void finish(int32_t heightPixels) = 0;
};

class ScanDevice {
public:
    virtual ~ScanDevice() = default;
    [[nodiscard]] virtual ScanStatus open() = 0;
    virtual std::vector<OptionDescriptor> options() = 0;
    [[nodiscard]] virtual ScanStatus setOption(const std::string& name,
                                               const std::string& value) = 0;
    // Before the first page of a batch.
    [[nodiscard]] virtual ScanStatus start() = 0;
    // Reads one page; noMorePages ends the batch. A page that fails half way is dropped.
    [[nodiscard]] virtual ScanStatus readPage(PageSink& sink) = 0;
    // May come from another thread while readPage runs.
    virtual void cancel() = 0;
    virtual void stop() = 0; // after the last page of a batch, or after cancel
    virtual std::string errorText() const = 0;
};

} // namespace paperline::sources
