// Where a data source gets its pages from: the worker client (sources/worker/WorkerClient.h), or a
// scripted one in tests. Every call comes from the application's thread and returns in limited
// time.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>
#include <span>
#include <string>

namespace paperline::sources {

class PageFeed {
public:
    virtual ~PageFeed() = default;

    // Opens the device and applies the stored options, then those of this scan. On failure
    // errorText() says why, in English.
    [[nodiscard]] virtual ScanStatus open() = 0;
    virtual void close() = 0;

    virtual std::vector<OptionDescriptor> options() = 0;
    [[nodiscard]] virtual ScanStatus setOption(const std::string& name,
                                               const std::string& value) = 0;

    // Starts reading pages; the feed reads one page ahead from here on.
    [[nodiscard]] virtual ScanStatus start() = 0;
    // Waits for the next page and makes it current. noMorePages ends the batch.
    [[nodiscard]] virtual ScanStatus nextPage(PageFormat& format) = 0;
    // The current page's rows, packed as PageFormat says; valid until nextPage, stop or close.
    virtual std::span<const uint8_t> pixels() const = 0;
    // Ends the batch and drops the page that was read ahead.
    virtual void stop() = 0;

    virtual std::string errorText() const = 0;
};

} // namespace paperline::sources
