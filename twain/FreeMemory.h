// The arithmetic of the memory guard. Its odd shifts and cuts are prescribed; they decide when the
// user is told that pages are no longer shown.
#pragma once

#include <cstdint>

namespace paperline {

// Row bytes copied in one scan before free memory is looked at after each page: 300 MiB.
inline constexpr uint64_t copiedBytesBeforeMemoryCheck = 0x12C00000;

// Compares free kibibytes, kept in 32 bits, with the argument shifted left by 20, kept in 32 bits
// too. The two shifts do not describe the same unit.
constexpr bool hasMemoryFor(uint64_t freeBytes, uint32_t megabytes) {
    return static_cast<uint32_t>(freeBytes >> 10U) >= (megabytes << 20U);
}

// Below 512 MiB; only the low 32 bits of the number are looked at, so that with more than 4 GiB
// free the remainder decides.
constexpr bool isMemoryLowForDisplay(uint64_t freeBytes) {
    return static_cast<uint32_t>(freeBytes) < 536870912U;
}

// Whether a page may be allocated at all. Allocation succeeds on this system even where the memory
// does not exist, so a page of more than 1 GiB must find room for its buffer, its bitmap and a
// writer's copy.
constexpr bool isPageAllocatable(uint64_t pageBytes, uint64_t freeBytes) {
    return pageBytes <= (uint64_t{1} << 30U) || pageBytes <= freeBytes / 3;
}

} // namespace paperline
