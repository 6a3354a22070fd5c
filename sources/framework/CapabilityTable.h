// The capabilities that a data source offers. Pixel type, feeder and resolution are options of the
// device; the rest is the same for every device.
#pragma once

#include "sources/framework/CapabilityContainer.h"
#include "sources/framework/DeviceOptions.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline::sources {

class CapabilityTable {
public:
    explicit CapabilityTable(DeviceOptions& options) : options_(options) {}

    // The device's present values become the defaults.
    void deviceOpened();

    uint32_t operations(uint16_t capability) const; // TWQC_ bits; 0: not offered
    uint16_t itemType(uint16_t capability) const;
    // MSG_GET, MSG_GETCURRENT or MSG_GETDEFAULT.
    std::optional<CapabilityValue> value(uint16_t capability, uint16_t message) const;
    [[nodiscard]] uint16_t set(uint16_t capability, uint32_t item); // TWCC_
    [[nodiscard]] uint16_t reset(uint16_t capability);              // TWCC_
    void resetAll();

    // How many pages the application wants; -1: all.
    int16_t transferCount() const { return transferCount_; }
    uint16_t units() const { return units_; }

private:
    uint32_t item(uint16_t capability) const;
    uint32_t defaultItem(uint16_t capability) const;
    std::vector<uint32_t> choices(uint16_t capability) const;
    CapabilityValue resolutionRange(uint16_t capability) const;
    uint32_t lengthItem(double inches) const;
    uint32_t resolutionItem(double dpi) const;
    uint16_t setOnDevice(uint16_t capability, uint32_t item);

    DeviceOptions& options_;
    int16_t transferCount_ = -1;
    uint16_t units_ = twain::TWUN_INCHES;
    uint16_t transferMechanism_ = twain::TWSX_NATIVE;
    int16_t defaultPixelType_ = twain::TWPT_RGB;
    bool defaultFeeder_ = false;
    double defaultDpi_[2] = {0, 0}; // by axis
};

} // namespace paperline::sources
