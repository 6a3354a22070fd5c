// Memory for the pixels of a page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace paperline {

struct FreePageMemory {
    size_t mappedBytes = 0; // 0: from the heap
    void operator()(uint8_t* bytes) const noexcept;
};
using PageMemory = std::unique_ptr<uint8_t[], FreePageMemory>;

// Zeroed bytes, untouched until they are used; nothing when they cannot be had. Much memory lies in
// large pieces where the system has them: first touches cost a fault for each piece.
[[nodiscard]] PageMemory allocatePageMemory(size_t byteCount);

} // namespace paperline
