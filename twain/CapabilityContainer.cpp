#include "twain/CapabilityContainer.h"

#include "twain/records/TwainConstants.h"

#include <cstdlib>
#include <cstring>

namespace paperline {
namespace {

constexpr size_t oneValueBytes = 8;
constexpr size_t rangeBytes = 24;
constexpr size_t enumerationItemsOffset = 16;
constexpr size_t enumerationExtraBytes = 20; // header and four bytes more, beside the items
constexpr size_t arrayItemsOffset = 8;
constexpr size_t arrayExtraBytes = 12;

template <typename Number> void put(CapabilityContainer& container, size_t offset, Number value) {
    std::memcpy(container.bytes.get() + offset, &value, sizeof value);
}

template <typename Number> Number get(const CapabilityContainer& container, size_t offset) {
    Number value;
    std::memcpy(&value, container.bytes.get() + offset, sizeof value);
    return value;
}

int32_t allocateContainer(CapabilityContainer& container,
                          uint16_t containerType,
                          size_t byteCount,
                          ClearedAllocator allocate) {
    auto* bytes = static_cast<uint8_t*>(allocate(byteCount));
    if (bytes == nullptr)
        return containerNoMemory;
    container.containerType = containerType;
    container.bytes.reset(bytes);
    container.byteCount = byteCount;
    return 0;
}

bool holds(const CapabilityContainer& container, uint16_t containerType, size_t headerBytes) {
    return container.containerType == containerType && container.bytes != nullptr &&
           container.byteCount >= headerBytes;
}

void finishReading(CapabilityContainer& container, AfterReading after) {
    if (after == AfterReading::freeBuffer)
        container = {};
}

uint64_t itemBytes(uint16_t itemType, uint32_t count) {
    return uint64_t{twain::capabilityItemSize(itemType)} * count;
}

// Copies the items out when both the container and the caller's buffer hold them.
bool copyItems(const CapabilityContainer& container,
               size_t itemsOffset,
               uint64_t byteCount,
               std::span<uint8_t> items) {
    if (byteCount > items.size() || byteCount > container.byteCount - itemsOffset)
        return false;
    if (byteCount > 0)
        std::memcpy(items.data(), container.bytes.get() + itemsOffset, byteCount);
    return true;
}

void putItems(CapabilityContainer& container, size_t itemsOffset, std::span<const uint8_t> items) {
    if (!items.empty())
        std::memcpy(container.bytes.get() + itemsOffset, items.data(), items.size());
}

} // namespace

void CapabilityBufferFree::operator()(uint8_t* bytes) const noexcept {
    std::free(bytes);
}

void* allocateCleared(size_t byteCount) {
    return std::calloc(byteCount, 1);
}

int32_t
buildOneValue(CapabilityContainer& container, const OneValue& value, ClearedAllocator allocate) {
    const int32_t code =
        allocateContainer(container, twain::TWON_ONEVALUE, oneValueBytes, allocate);
    if (code != 0)
        return code;
    put(container, 0, value.itemType);
    put(container, 4, value.item);
    return 0;
}

int32_t
buildRange(CapabilityContainer& container, const ValueRange& range, ClearedAllocator allocate) {
    const int32_t code = allocateContainer(container, twain::TWON_RANGE, rangeBytes, allocate);
    if (code != 0)
        return code;
    put(container, 0, range.itemType);
    put(container, 4, range.minValue);
    put(container, 8, range.maxValue);
    put(container, 12, range.stepSize);
    put(container, 16, range.defaultValue);
    put(container, 20, range.currentValue);
    return 0;
}

int32_t buildEnumeration(CapabilityContainer& container,
                         const EnumerationHeader& header,
                         std::span<const uint8_t> items,
                         ClearedAllocator allocate) {
    if (items.size() != itemBytes(header.itemType, header.numItems))
        return containerBadArgument;
    const int32_t code = allocateContainer(
        container, twain::TWON_ENUMERATION, items.size() + enumerationExtraBytes, allocate);
    if (code != 0)
        return code;
    put(container, 0, header.itemType);
    put(container, 4, header.numItems);
    put(container, 8, header.currentIndex);
    put(container, 12, header.defaultIndex);
    putItems(container, enumerationItemsOffset, items);
    return 0;
}

int32_t buildArray(CapabilityContainer& container,
                   const ArrayHeader& header,
                   std::span<const uint8_t> items,
                   ClearedAllocator allocate) {
    if (items.size() != itemBytes(header.itemType, header.numItems))
        return containerBadArgument;
    const int32_t code =
        allocateContainer(container, twain::TWON_ARRAY, items.size() + arrayExtraBytes, allocate);
    if (code != 0)
        return code;
    put(container, 0, header.itemType);
    put(container, 4, header.numItems);
    putItems(container, arrayItemsOffset, items);
    return 0;
}

int32_t readOneValue(CapabilityContainer& container, OneValue& value, AfterReading after) {
    if (!holds(container, twain::TWON_ONEVALUE, oneValueBytes))
        return containerBadArgument;
    value.itemType = get<uint16_t>(container, 0);
    value.item = get<uint32_t>(container, 4);
    finishReading(container, after);
    return 0;
}

int32_t readRange(CapabilityContainer& container, ValueRange& range, AfterReading after) {
    if (!holds(container, twain::TWON_RANGE, rangeBytes))
        return containerBadArgument;
    range.itemType = get<uint16_t>(container, 0);
    range.minValue = get<uint32_t>(container, 4);
    range.maxValue = get<uint32_t>(container, 8);
    range.stepSize = get<uint32_t>(container, 12);
    range.defaultValue = get<uint32_t>(container, 16);
    range.currentValue = get<uint32_t>(container, 20);
    finishReading(container, after);
    return 0;
}

int32_t readEnumeration(CapabilityContainer& container,
                        EnumerationHeader& header,
                        std::span<uint8_t> items,
                        AfterReading after) {
    if (!holds(container, twain::TWON_ENUMERATION, enumerationItemsOffset))
        return containerBadArgument;
    EnumerationHeader found;
    found.itemType = get<uint16_t>(container, 0);
    found.numItems = get<uint32_t>(container, 4);
    found.currentIndex = get<uint32_t>(container, 8);
    found.defaultIndex = get<uint32_t>(container, 12);
    const uint64_t wanted = itemBytes(found.itemType, found.numItems);
    if (!copyItems(container, enumerationItemsOffset, wanted, items))
        return containerBadArgument;
    header = found;
    finishReading(container, after);
    return 0;
}

int32_t readArray(CapabilityContainer& container,
                  ArrayHeader& header,
                  std::span<uint8_t> items,
                  AfterReading after) {
    if (!holds(container, twain::TWON_ARRAY, arrayItemsOffset))
        return containerBadArgument;
    ArrayHeader found;
    found.itemType = get<uint16_t>(container, 0);
    found.numItems = get<uint32_t>(container, 4);
    const uint64_t wanted = itemBytes(found.itemType, found.numItems);
    if (!copyItems(container, arrayItemsOffset, wanted, items))
        return containerBadArgument;
    header = found;
    finishReading(container, after);
    return 0;
}

} // namespace paperline
