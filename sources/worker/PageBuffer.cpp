#include "sources/worker/PageBuffer.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace paperline::sources {

namespace {

constexpr int64_t firstRowsOfUnknownHeight = 1024;

} // namespace

Descriptor makeSharedMemory(const char* name, int64_t bytes) {
    Descriptor memory(memfd_create(name, MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!memory.isOpen() || ftruncate(memory.number(), bytes) != 0 ||
        fcntl(memory.number(), F_ADD_SEALS, F_SEAL_SHRINK) != 0)
        return {};
    return memory;
}

PageBuffer::~PageBuffer() {
    if (start_ != nullptr)
        munmap(start_, static_cast<size_t>(mappedBytes_));
}

bool PageBuffer::begin(const PageFormat& format) {
    progressed_();
    whole_ = false;
    format_ = format;
    PageFormat firstPart = format;
    if (format.heightPixels == -1)
        firstPart.heightPixels = 1;
    const int64_t bytes = pageByteCount(firstPart);
    if (bytes == 0)
        return false;
    if (format.heightPixels != -1)
        return reserve(bytes);
    return reserve(std::min(bytes * firstRowsOfUnknownHeight, maximumPageBytes));
}

std::span<uint8_t> PageBuffer::rows(int32_t first, int32_t count) {
    progressed_();
    if (first < 0 || count <= 0)
        return {};
    const int64_t end = int64_t{first} + count;
    const int64_t bytesPerRow = format_.bytesPerRow();
    if (format_.heightPixels != -1 ? end > format_.heightPixels
                                   : end > maximumPageBytes / bytesPerRow || end > INT32_MAX)
        return {};
    // Growing by half needs few moves and wastes less than doubling.
    if (end * bytesPerRow > mappedBytes_ &&
        !reserve(std::clamp(mappedBytes_ / 2 * 3, end * bytesPerRow, maximumPageBytes)))
        return {};
    return {start_ + int64_t{first} * bytesPerRow, static_cast<size_t>(count * bytesPerRow)};
}

void PageBuffer::finish(int32_t heightPixels) {
    progressed_();
    const bool known = format_.heightPixels != -1;
    if (heightPixels <= 0 || (known && heightPixels > format_.heightPixels))
        return;
    format_.heightPixels = heightPixels;
    const int64_t bytes = pageByteCount(format_);
    whole_ = bytes > 0 && bytes <= mappedBytes_;
}

bool PageBuffer::reserve(int64_t bytes) {
    if (bytes <= mappedBytes_)
        return true;
    if (!memory_.isOpen()) {
        memory_ = makeSharedMemory("paperline-page", bytes);
        if (!memory_.isOpen())
            return false;
    } else if (ftruncate(memory_.number(), bytes) != 0) {
        return false;
    }
    void* place = start_ == nullptr ? mmap(nullptr,
                                           static_cast<size_t>(bytes),
                                           PROT_READ | PROT_WRITE,
                                           MAP_SHARED,
                                           memory_.number(),
                                           0)
                                    : mremap(start_,
                                             static_cast<size_t>(mappedBytes_),
                                             static_cast<size_t>(bytes),
                                             MREMAP_MAYMOVE);
    if (place == MAP_FAILED)
        return false;
    start_ = static_cast<uint8_t*>(place);
    mappedBytes_ = bytes;
    return true;
}

} // namespace paperline::sources
