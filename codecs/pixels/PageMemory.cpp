#include "codecs/pixels/PageMemory.h"

#include <sys/mman.h>

#include <cstdlib>

namespace paperline {
namespace {

constexpr size_t largePieceBytes = size_t{2} << 20;
constexpr size_t worthMapping = 2 * largePieceBytes;

} // namespace

void FreePageMemory::operator()(uint8_t* bytes) const noexcept {
    if (mappedBytes != 0)
        (void)::munmap(bytes, mappedBytes);
    else
        std::free(bytes);
}

PageMemory allocatePageMemory(size_t byteCount) {
    if (byteCount < worthMapping)
        return PageMemory(static_cast<uint8_t*>(std::calloc(byteCount, 1)));
    void* place =
        ::mmap(nullptr, byteCount, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED)
        return {};
    (void)::madvise(place, byteCount, MADV_HUGEPAGE); // advice: its refusal costs only time
    return PageMemory(static_cast<uint8_t*>(place), {byteCount});
}

} // namespace paperline
