// A device as its worker program sees it. The software scanner and SANE devices implement it; the
// worker server (sources/worker/WorkerServer.h) drives it and carries its pages to the data source.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace paperline::sources {

// Takes one page while it is read. Lives in shared memory in the worker.
class PageSink {
public:
    virtual ~PageSink() = default;
    // Starts a page. heightPixels -1: the sink grows as rows are asked for.
    [[nodiscard]] virtual bool begin(const PageFormat& format) = 0;
    // Writable room for `count` rows from row `first` on; empty when there is no memory for them.
    virtual std::span<uint8_t> rows(int32_t first, int32_t count) = 0;
    // The page is whole and has this many rows.
    virtual void finish(int32_t heightPixels) = 0;
};

class ScanDevice {
public:
    virtual ~ScanDevice() = default;
    [[nodiscard]] virtual ScanStatus open() = 0;
    virtual std::vector<OptionDescriptor> options() = 0;
    [[nodiscard]] virtual ScanStatus setOption(const std::string& name,
                                               const std::string& value) = 0;
    // Called before the first page of a batch.
    [[nodiscard]] virtual ScanStatus start() = 0;
    // Reads one page into the sink; noMorePages when the batch is over. A page that fails half way
    // is not delivered.
    [[nodiscard]] virtual ScanStatus readPage(PageSink& sink) = 0;
    // May come from another thread while readPage runs.
    virtual void cancel() = 0;
    virtual void stop() = 0; // after the last page of a batch, or after cancel
    virtual std::string errorText() const = 0;
};

} // namespace paperline::sources
