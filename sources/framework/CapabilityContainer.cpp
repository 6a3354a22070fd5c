#include "sources/framework/CapabilityContainer.h"

#include <cstring>

namespace paperline::sources {

namespace {

using namespace twain;

template <typename Record> void put(std::vector<uint8_t>& bytes, const Record& record) {
    const auto* first = reinterpret_cast<const uint8_t*>(&record);
    bytes.insert(bytes.end(), first, first + sizeof(Record));
}

void putItems(std::vector<uint8_t>& bytes, const CapabilityValue& value) {
    const uint32_t size = capabilityItemSize(value.itemType);
    for (const uint32_t item : value.items)
        for (uint32_t byte = 0; byte < size; ++byte)
            bytes.push_back(static_cast<uint8_t>(item >> (8 * byte)));
}

std::vector<uint8_t> containerBytes(const CapabilityValue& value) {
    std::vector<uint8_t> bytes;
    const auto count = static_cast<uint32_t>(value.items.size());
    switch (value.containerType) {
    case TWON_ONEVALUE:
        put(bytes, abi::OneValue{value.itemType, value.items.empty() ? 0 : value.items.front()});
        break;
    case TWON_ENUMERATION:
        put(bytes,
            abi::EnumerationHeader{value.itemType, count, value.currentIndex, value.defaultIndex});
        putItems(bytes, value);
        break;
    case TWON_RANGE:
        put(bytes,
            abi::Range{value.itemType,
                       value.minimum,
                       value.maximum,
                       value.step,
                       value.defaultValue,
                       value.current});
        break;
    default:
        put(bytes, abi::ArrayHeader{value.itemType, count});
        putItems(bytes, value);
        break;
    }
    return bytes;
}

// Containers are packed to two bytes, so that their records need not be aligned.
template <typename Record> Record recordAt(const uint8_t* bytes) {
    Record record{};
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

uint32_t itemAt(const uint8_t* bytes, uint16_t itemType) {
    uint32_t item = 0;
    std::memcpy(&item, bytes, capabilityItemSize(itemType));
    return item;
}

// In a field of 32 bits the bits above a narrow item are undefined.
uint32_t narrowed(uint32_t item, uint16_t itemType) {
    const uint32_t bits = 8 * capabilityItemSize(itemType);
    if (bits < 32)
        item &= (1u << bits) - 1;
    if (itemType == TWTY_INT16)
        return static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(item)));
    return item;
}

} // namespace

CapabilityValue CapabilityValue::oneValue(uint16_t itemType, uint32_t item) {
    CapabilityValue value;
    value.containerType = TWON_ONEVALUE;
    value.itemType = itemType;
    value.items = {item};
    return value;
}

abi::Handle makeContainer(const ManagerLink& link, const CapabilityValue& value) {
    const std::vector<uint8_t> bytes = containerBytes(value);
    const abi::Handle handle = link.allocate(static_cast<uint32_t>(bytes.size()));
    if (handle == nullptr)
        return nullptr;
    const LockedHandle locked(link, handle);
    if (locked.bytes() == nullptr) {
        link.release(handle);
        return nullptr;
    }
    std::memcpy(locked.bytes(), bytes.data(), bytes.size());
    return handle;
}

std::optional<uint32_t> settingFromContainer(const ManagerLink& link,
                                             const abi::Capability& capability,
                                             uint16_t itemType) {
    if (capabilityItemSize(itemType) > sizeof(uint32_t))
        return std::nullopt;
    const LockedHandle locked(link, capability.hContainer);
    const uint8_t* bytes = locked.bytes();
    if (bytes == nullptr || recordAt<uint16_t>(bytes) != itemType)
        return std::nullopt;
    switch (capability.ConType) {
    case TWON_ONEVALUE:
        return narrowed(recordAt<abi::OneValue>(bytes).Item, itemType);
    case TWON_RANGE:
        return narrowed(recordAt<abi::Range>(bytes).CurrentValue, itemType);
    case TWON_ENUMERATION: {
        const auto header = recordAt<abi::EnumerationHeader>(bytes);
        if (header.CurrentIndex >= header.NumItems)
            return std::nullopt;
        const uint64_t offset = sizeof header + static_cast<uint64_t>(header.CurrentIndex) *
                                                    capabilityItemSize(itemType);
        return narrowed(itemAt(bytes + offset, itemType), itemType);
    }
    default:
        return std::nullopt;
    }
}

} // namespace paperline::sources
