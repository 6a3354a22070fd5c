#include "twain/CapabilityContainer.h"

#include "twain/records/TwainConstants.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace paperline {
namespace {

static_assert(sizeof(OneValue) == 8 && sizeof(ValueRange) == 24);
static_assert(sizeof(EnumerationHeader) == 16 && sizeof(ArrayHeader) == 8);

template <typename Record>
concept HasItems = requires(Record record) {
    record.numItems;
};

template <HasItems Record> uint64_t itemBytes(const Record& record) {
    return uint64_t{twain::capabilityItemSize(record.itemType)} * record.numItems;
}

template <typename Record>
int32_t build(CapabilityContainer& container,
              uint16_t containerType,
              const Record& record,
              std::span<const uint8_t> items,
              ClearedAllocator allocate) {
    size_t byteCount = sizeof record;
    if constexpr (HasItems<Record>) {
        constexpr size_t spareBytes = 4;
        if (items.size() != itemBytes(record))
            return containerBadArgument;
        byteCount += items.size() + spareBytes;
    }
    auto* bytes = static_cast<uint8_t*>(allocate(byteCount));
    if (bytes == nullptr)
        return containerNoMemory;
    std::memcpy(bytes, &record, sizeof record);
    std::copy(items.begin(), items.end(), bytes + sizeof record);
    container.containerType = containerType;
    container.bytes.reset(bytes);
    container.byteCount = byteCount;
    return 0;
}

template <typename Record>
int32_t read(CapabilityContainer& container,
             uint16_t containerType,
             Record& record,
             std::span<uint8_t> items,
             AfterReading after) {
    if (container.containerType != containerType || container.bytes == nullptr ||
        container.byteCount < sizeof record)
        return containerBadArgument;
    Record found;
    std::memcpy(&found, container.bytes.get(), sizeof found);
    if constexpr (HasItems<Record>) {
        const uint64_t byteCount = itemBytes(found);
        if (byteCount > items.size() || byteCount > container.byteCount - sizeof found)
            return containerBadArgument;
        std::copy_n(container.bytes.get() + sizeof found, byteCount, items.begin());
    }
    record = found;
    if (after == AfterReading::freeBuffer)
        container = {};
    return 0;
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
    return build(container, twain::TWON_ONEVALUE, value, {}, allocate);
}

int32_t
buildRange(CapabilityContainer& container, const ValueRange& range, ClearedAllocator allocate) {
    return build(container, twain::TWON_RANGE, range, {}, allocate);
}

int32_t buildEnumeration(CapabilityContainer& container,
                         const EnumerationHeader& header,
                         std::span<const uint8_t> items,
                         ClearedAllocator allocate) {
    return build(container, twain::TWON_ENUMERATION, header, items, allocate);
}

int32_t buildArray(CapabilityContainer& container,
                   const ArrayHeader& header,
                   std::span<const uint8_t> items,
                   ClearedAllocator allocate) {
    return build(container, twain::TWON_ARRAY, header, items, allocate);
}

int32_t readOneValue(CapabilityContainer& container, OneValue& value, AfterReading after) {
    return read(container, twain::TWON_ONEVALUE, value, {}, after);
}

int32_t readRange(CapabilityContainer& container, ValueRange& range, AfterReading after) {
    return read(container, twain::TWON_RANGE, range, {}, after);
}

int32_t readEnumeration(CapabilityContainer& container,
                        EnumerationHeader& header,
                        std::span<uint8_t> items,
                        AfterReading after) {
    return read(container, twain::TWON_ENUMERATION, header, items, after);
}

int32_t readArray(CapabilityContainer& container,
                  ArrayHeader& header,
                  std::span<uint8_t> items,
                  AfterReading after) {
    return read(container, twain::TWON_ARRAY, header, items, after);
}

} // namespace paperline
