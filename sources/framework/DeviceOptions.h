// A device's options as capabilities need them: pixel type, feeder, resolution and scan area,
// however the device names their values.
#pragma once

#include "sources/framework/PageFeed.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

enum class Axis { horizontal, vertical };

// Inches from the left and top edge of the scan area.
struct PaperFrame {
    double left = 0, top = 0, right = 0, bottom = 0;
};

struct ResolutionChoices {
    std::vector<double> dpi; // listed by the device
    bool hasRange = false;
    double minimum = 0, maximum = 0, step = 0; // dots per inch
};

// Whether a value of the option "source" names a document feeder.
bool isFeederName(std::string_view source);

class DeviceOptions {
public:
    explicit DeviceOptions(PageFeed& feed) : feed_(feed) {}

    // After opening and after each setting, because one option may change others.
    void refresh() { options_ = feed_.options(); }
    const std::vector<OptionDescriptor>& all() const { return options_; }

    std::vector<int16_t> pixelTypes() const; // TWPT_, at least one
    int16_t pixelType() const;
    [[nodiscard]] ScanStatus setPixelType(int16_t pixelType);

    bool hasFlatbed() const; // true when the device does not say
    bool hasFeeder() const;
    bool usesFeeder() const;
    [[nodiscard]] ScanStatus setUsesFeeder(bool feeder);

    ResolutionChoices resolutions(Axis axis) const;
    double resolution(Axis axis) const; // 0 when the device does not say
    [[nodiscard]] ScanStatus setResolution(Axis axis, double dpi);

    PaperFrame frame() const;
    [[nodiscard]] ScanStatus setFrame(const PaperFrame& frame);
    double physicalInches(Axis axis) const; // an A4 sheet when the device does not say

private:
    const OptionDescriptor* find(std::string_view name) const;
    const OptionDescriptor* resolutionOption(Axis axis) const;
    [[nodiscard]] ScanStatus set(const std::string& name, const std::string& value);
    [[nodiscard]] ScanStatus setLength(std::string_view name, double inches);

    PageFeed& feed_;
    std::vector<OptionDescriptor> options_;
};

} // namespace paperline::sources
