// Values of capabilities, and the containers that carry them.
#pragma once

#include "sources/framework/ManagerLink.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline::sources {

// Items of every type are kept as 32-bit numbers: signed ones extended, FIX32 as in fix32Item.
struct CapabilityValue {
    uint16_t containerType = 0; // TWON_
    uint16_t itemType = 0;      // TWTY_UINT16, TWTY_FIX32 ...
    std::vector<uint32_t> items;
    uint32_t currentIndex = 0; // of an enumeration
    uint32_t defaultIndex = 0;
    uint32_t minimum = 0, maximum = 0, step = 0; // of a range
    uint32_t current = 0, defaultValue = 0;      // of a range

    static CapabilityValue oneValue(uint16_t itemType, uint32_t item);
};

// The value's container in memory that the application frees; null when there is none.
[[nodiscard]] twain::abi::Handle makeContainer(const ManagerLink& link,
                                               const CapabilityValue& value);

// The item that an application sets: that of a one-value, the current one of an enumeration or a
// range. Nothing for an array, another item type, or an index out of range.
[[nodiscard]] std::optional<uint32_t> settingFromContainer(const ManagerLink& link,
                                                           const twain::abi::Capability& capability,
                                                           uint16_t itemType);

} // namespace paperline::sources
