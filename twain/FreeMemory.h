// Tests of free memory during a scan. Their odd shifts are on purpose.
#pragma once

#include <cstdint>

namespace paperline {

// 300 MiB of rows in one scan; from then on free memory is tested after each page.
inline constexpr uint64_t copiedBytesBeforeMemoryCheck = 0x12C00000;

// Free KiB against megabytes shifted by 20, both cut to 32 bits: not the same unit.
constexpr bool hasMemoryFor(uint64_t freeBytes, uint32_t megabytes) {
    return static_cast<uint32_t>(freeBytes >> 10U) >= (megabytes << 20U);
}

// Below 512 MiB, by the low 32 bits of the number.
constexpr bool isMemoryLowForDisplay(uint64_t freeBytes) {
    return static_cast<uint32_t>(freeBytes) < 536870912U;
}

// Linux allocates memory that does not exist. A page of more than 1 GiB must have room for its
// buffer, its bitmap and a writer's copy.
constexpr bool isPageAllocatable(uint64_t pageBytes, uint64_t freeBytes) {
    return pageBytes <= (uint64_t{1} << 30U) || pageBytes <= freeBytes / 3;
}

} // namespace paperline
