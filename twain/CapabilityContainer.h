// Builds and reads the four TWAIN capability containers: one of the records below, then its items.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace paperline {

inline constexpr int32_t containerNoMemory = -108;   // the buffer cannot be allocated
inline constexpr int32_t containerBadArgument = -50; // other container type, or sizes do not fit

struct CapabilityBufferFree {
    void operator()(uint8_t* bytes) const noexcept;
};

struct CapabilityContainer {
    uint16_t containerType = 0; // a TWON number
    std::unique_ptr<uint8_t[], CapabilityBufferFree> bytes;
    size_t byteCount = 0;

    std::span<const uint8_t> view() const { return {bytes.get(), byteCount}; }
};

// Zeroed memory for std::free, or null.
using ClearedAllocator = void* (*)(size_t byteCount);
void* allocateCleared(size_t byteCount);

struct OneValue {
    uint16_t itemType = 0;
    uint16_t padding = 0;
    uint32_t item = 0;
};
struct ValueRange {
    uint16_t itemType = 0;
    uint16_t padding = 0;
    uint32_t minValue = 0;
    uint32_t maxValue = 0;
    uint32_t stepSize = 0;
    uint32_t defaultValue = 0;
    uint32_t currentValue = 0;
};
struct EnumerationHeader {
    uint16_t itemType = 0;
    uint16_t padding = 0;
    uint32_t numItems = 0;
    uint32_t currentIndex = 0;
    uint32_t defaultIndex = 0;
};
struct ArrayHeader {
    uint16_t itemType = 0;
    uint16_t padding = 0;
    uint32_t numItems = 0;
};

// Builders return 0 or one of the codes above, with `container` unchanged. `items` are numItems
// items of the type's size.
[[nodiscard]] int32_t buildOneValue(CapabilityContainer& container,
                                    const OneValue& value,
                                    ClearedAllocator allocate = allocateCleared);
[[nodiscard]] int32_t buildRange(CapabilityContainer& container,
                                 const ValueRange& range,
                                 ClearedAllocator allocate = allocateCleared);
[[nodiscard]] int32_t buildEnumeration(CapabilityContainer& container,
                                       const EnumerationHeader& header,
                                       std::span<const uint8_t> items,
                                       ClearedAllocator allocate = allocateCleared);
[[nodiscard]] int32_t buildArray(CapabilityContainer& container,
                                 const ArrayHeader& header,
                                 std::span<const uint8_t> items,
                                 ClearedAllocator allocate = allocateCleared);

enum class AfterReading { keepBuffer, freeBuffer }; // what a successful read does with the buffer

// Readers return 0, or containerBadArgument, also when `items` or the container are too short for
// its number of items.
[[nodiscard]] int32_t
readOneValue(CapabilityContainer& container, OneValue& value, AfterReading after);
[[nodiscard]] int32_t
readRange(CapabilityContainer& container, ValueRange& range, AfterReading after);
[[nodiscard]] int32_t readEnumeration(CapabilityContainer& container,
                                      EnumerationHeader& header,
                                      std::span<uint8_t> items,
                                      AfterReading after);
[[nodiscard]] int32_t readArray(CapabilityContainer& container,
                                ArrayHeader& header,
                                std::span<uint8_t> items,
                                AfterReading after);

} // namespace paperline
