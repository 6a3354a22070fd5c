// The values that data sources, their workers and devices exchange; no library's types.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

inline constexpr double millimetresPerInch = 25.4;
// No page is larger than this, whatever a device claims.
inline constexpr int64_t maximumPageBytes = int64_t{4} << 30;

enum class ScanStatus : uint32_t {
    good = 0,
    noMorePages, // the feeder is empty, or the flatbed's one page is done
    cancelled,
    deviceBusy,
    paperJam,
    coverOpen,
    invalid, // a value or a combination that the device refuses
    unsupported,
    ioError,
    noMemory,
    accessDenied,
    noSuchDevice,
    workerDied, // the worker process ended by itself
    workerHung, // the worker did not answer in time and was killed
};

// A page of 1 bit (0 is black), 8 bits grey or 24 bits RGB. Rows are packed to whole bytes, the top
// row comes first.
struct PageFormat {
    int32_t widthPixels = 0;
    int32_t heightPixels = 0; // -1: not known before the last row
    int bitsPerPixel = 8;     // 1, 8 or 24
    double horizontalDpi = 0;
    double verticalDpi = 0;

    int64_t bytesPerRow() const {
        return bitsPerPixel == 1 ? (static_cast<int64_t>(widthPixels) + 7) / 8
                                 : static_cast<int64_t>(widthPixels) * (bitsPerPixel / 8);
    }
};

// Bytes of the page's pixels; 0 when a number is invalid, or the page or its rows are too large.
[[nodiscard]] int64_t pageByteCount(const PageFormat& format);

enum class OptionKind : uint32_t { boolean, integer, fixed, text, button };

struct OptionDescriptor {
    std::string name;  // the device's own, "resolution"
    std::string title; // for people, may be empty
    OptionKind kind = OptionKind::text;
    std::string unit;                 // "dpi", "mm", "%" or ""
    std::string value;                // current value as text; lists are comma separated
    std::vector<std::string> choices; // every allowed value, when the device lists them
    bool hasRange = false;
    double minimum = 0, maximum = 0, step = 0; // when hasRange; step 0: any value between
    bool active = true;
    bool settable = true;
};

// The option of this name; null when there is none.
const OptionDescriptor* findOption(const std::vector<OptionDescriptor>& options,
                                   std::string_view name);

} // namespace paperline::sources
