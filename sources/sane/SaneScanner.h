// A SANE scanner in plain values, which tests can script. LibsaneScanner.cpp is the only file that
// includes the library.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline::sources {

enum class SaneFrame { gray, rgb, red, green, blue, other };

struct SaneParameters {
    SaneFrame frame = SaneFrame::gray;
    bool lastFrame = true;
    int32_t bytesPerLine = 0; // padding included
    int32_t pixelsPerLine = 0;
    int32_t lines = -1; // -1: not known before the last one
    int32_t depth = 8;  // bits per sample
};

// `good` with some bytes (0: no data yet) or at the frame's end, or a failure.
struct SaneRead {
    ScanStatus status = ScanStatus::good;
    bool endOfFrame = false;
    size_t count = 0;
};

class SaneScanner {
public:
    virtual ~SaneScanner() = default;
    [[nodiscard]] virtual ScanStatus open(const std::string& device) = 0;

    // Every option that has a name.
    virtual std::vector<OptionDescriptor> options() = 0;
    // On failure errorText() says what the option takes.
    [[nodiscard]] virtual ScanStatus setOption(const std::string& name,
                                               const std::string& value) = 0;

    [[nodiscard]] virtual ScanStatus start() = 0; // one frame; noMorePages: the feeder is empty
    virtual std::optional<SaneParameters> parameters() = 0;
    virtual SaneRead read(std::span<uint8_t> room) = 0;
    virtual void waitForData() = 0; // for a short time at most
    virtual void cancel() = 0;      // ends the batch; may come from another thread
    virtual std::string errorText() const = 0;
};

struct SaneDeviceEntry {
    std::string name, vendor, model; // UTF-8
    bool operator==(const SaneDeviceEntry&) const = default;
};
} // namespace paperline::sources
