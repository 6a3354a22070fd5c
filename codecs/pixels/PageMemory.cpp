#include "codecs/pixels/PageMemory.h"

#include <sys/mman.h>

#include <cstdlib>

namespace paperline {
namespace {

constexpr size_t hugePageBytes = size_t{2} << 20;

} // namespace

void FreePageMemory::operator()(uint8_t* bytes) const noexcept {
    if (mappedBytes != 0)
        (void)::munmap(bytes, mappedBytes);
    else
        std::free(bytes);
}

PageMemory allocatePageMemory(size_t byteCount) {
    if (byteCount < 2 * hugePageBytes)
        return PageMemory(static_cast<uint8_t*>(std::calloc(byteCount, 1)));
    void* bytes =
        ::mmap(nullptr, byteCount, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (bytes == MAP_FAILED)
        return {};
    (void)::madvise(bytes, byteCount, MADV_HUGEPAGE); // refusal costs only time
    return PageMemory(static_cast<uint8_t*>(bytes), {byteCount});
}

} // namespace paperline
