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

// Zeroed bytes; null when memory runs out. From 4 MiB on in huge pages where the system has them: a
// page fault costs more than the copy into a page of 4 KiB.
[[nodiscard]] PageMemory allocatePageMemory(size_t byteCount);

} // namespace paperline
