// A scanner as SANE offers it, in plain values: what the rest of this folder works with and tests
// script. LibsaneScanner.cpp is the only file that knows the library itself.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline::sources {

enum class SaneFrame { gray, rgb, red, green, blue, other };

struct SaneParameters {
    SaneFrame frame = SaneFrame::gray;
    bool lastFrame = true;
    int32_t bytesPerLine = 0; // may be more than the pixels need
    int32_t pixelsPerLine = 0;
    int32_t lines = -1; // -1: not known before the last one
    int32_t depth = 8;  // bits per sample
};

// What came of reading: `good` with some bytes (none: nothing is there yet), or the frame's end.
struct SaneRead {
    ScanStatus status = ScanStatus::good;
    bool endOfFrame = false;
    size_t count = 0;
};

class SaneScanner {
public:
    virtual ~SaneScanner() = default;
    [[nodiscard]] virtual ScanStatus open(const std::string& device) = 0;

    // Every option that has a name, with its present value as text.
    virtual std::vector<OptionDescriptor> options() = 0;
    // Sets an option from text; errorText() says what it would have taken instead.
    [[nodiscard]] virtual ScanStatus setOption(const std::string& name,
                                               const std::string& value) = 0;

    [[nodiscard]] virtual ScanStatus start() = 0; // one frame; noMorePages: the feeder is empty
    virtual std::optional<SaneParameters> parameters() = 0;
    virtual SaneRead read(std::span<uint8_t> room) = 0;
    virtual void waitForData() = 0; // a short while at most, after a read that gave nothing
    virtual void cancel() = 0;      // ends the batch; may come from another thread
    virtual std::string errorText() const = 0;
};

std::unique_ptr<SaneScanner> makeLibsaneScanner();

struct SaneDeviceEntry {
    std::string name, vendor, model; // UTF-8
    bool operator==(const SaneDeviceEntry&) const = default;
};
// Every device that SANE finds, network ones included; nothing when SANE cannot say. Takes seconds,
// and a broken driver may take the process with it.
std::optional<std::vector<SaneDeviceEntry>> listSaneDevices();

} // namespace paperline::sources
