#include "codecs/tiff/TiffHandle.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <sys/stat.h>

extern "C" {

static int noteTiffError(TIFF* /*tiff*/,
                         void* errors,
                         const char* /*module*/,
                         const char* /*format*/,
                         va_list /*arguments*/) {
    ++static_cast<paperline::TiffErrors*>(errors)->count;
    return 1;
}

static int ignoreTiffWarning(TIFF* /*tiff*/,
                             void* /*unused*/,
                             const char* /*module*/,
                             const char* /*format*/,
                             va_list /*arguments*/) {
    return 1;
}

static int keepTiffOpen(thandle_t /*handle*/) {
    return 0;
}
}

namespace paperline {
namespace {

using OptionsHandle = std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)>;

// False for a position below 0.
bool seekTo(uint64_t& position, toff_t offset, int whence, uint64_t size) {
    const uint64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? position : size;
    const uint64_t target = base + offset; // backward offsets wrap around
    if (target > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()))
        return false;
    position = target;
    return true;
}

constexpr auto seekFailed = std::numeric_limits<toff_t>::max();

tmsize_t readMemory(thandle_t handle, void* target, tmsize_t count) {
    auto& memory = *static_cast<TiffMemory*>(handle);
    if (memory.position >= memory.bytes.size() || count <= 0)
        return 0;
    const size_t taken =
        std::min(static_cast<size_t>(count), memory.bytes.size() - memory.position);
    std::memcpy(target, &memory.bytes[memory.position], taken);
    memory.position += taken;
    return static_cast<tmsize_t>(taken);
}

tmsize_t writeMemory(thandle_t handle, void* source, tmsize_t count) {
    auto& memory = *static_cast<TiffMemory*>(handle);
    if (count <= 0)
        return 0;
    const auto size = static_cast<size_t>(count);
    const auto* bytes = static_cast<const uint8_t*>(source);
    try {
        if (memory.position == memory.bytes.size()) {
            memory.bytes.insert(memory.bytes.end(), bytes, bytes + size);
        } else {
            memory.bytes.resize(std::max<size_t>(memory.bytes.size(), memory.position + size));
            std::memcpy(&memory.bytes[memory.position], bytes, size);
        }
    } catch (const std::bad_alloc&) {
        return -1;
    }
    memory.position += size;
    return count;
}

toff_t seekMemory(thandle_t handle, toff_t offset, int whence) {
    auto& memory = *static_cast<TiffMemory*>(handle);
    return seekTo(memory.position, offset, whence, memory.bytes.size()) ? memory.position
                                                                        : seekFailed;
}

toff_t sizeOfMemory(thandle_t handle) {
    return static_cast<TiffMemory*>(handle)->bytes.size();
}

toff_t sizeOfFile(thandle_t handle) {
    struct stat status = {};
    const bool known = ::fstat(static_cast<TiffDescriptor*>(handle)->number, &status) == 0;
    return known ? static_cast<toff_t>(status.st_size) : 0;
}

tmsize_t readFileAt(thandle_t handle, void* target, tmsize_t count) {
    auto& file = *static_cast<TiffDescriptor*>(handle);
    if (count <= 0)
        return 0;
    const size_t filled = readAt(
        file.number, file.position, {static_cast<uint8_t*>(target), static_cast<size_t>(count)});
    file.position += filled;
    return static_cast<tmsize_t>(filled);
}

tmsize_t writeFileAt(thandle_t handle, void* source, tmsize_t count) {
    auto& file = *static_cast<TiffDescriptor*>(handle);
    if (count <= 0)
        return 0;
    const auto size = static_cast<size_t>(count);
    if (!writeAllAt(file.number, file.position, {static_cast<const uint8_t*>(source), size})) {
        file.writeFailed = true;
        return -1;
    }
    file.position += size;
    return count;
}

toff_t seekFile(thandle_t handle, toff_t offset, int whence) {
    auto& file = *static_cast<TiffDescriptor*>(handle);
    const uint64_t size = whence == SEEK_END ? sizeOfFile(handle) : 0;
    return seekTo(file.position, offset, whence, size) ? file.position : seekFailed;
}

struct Access {
    const char* name; // for the library's messages
    TIFFReadWriteProc read;
    TIFFReadWriteProc write;
    TIFFSeekProc seek;
    TIFFSizeProc size;
};

constexpr Access memoryAccess{"memory", readMemory, writeMemory, seekMemory, sizeOfMemory};
constexpr Access fileAccess{"file", readFileAt, writeFileAt, seekFile, sizeOfFile};

TiffHandle openThrough(const Access& access,
                       thandle_t data,
                       const char* mode,
                       TiffErrors& errors,
                       tmsize_t largestAllocation) {
    const OptionsHandle options(TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
    if (!options)
        return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), noteTiffError, &errors);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreTiffWarning, nullptr);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), largestAllocation);
    return TiffHandle(TIFFClientOpenExt(access.name,
                                        mode,
                                        data,
                                        access.read,
                                        access.write,
                                        access.seek,
                                        keepTiffOpen,
                                        access.size,
                                        nullptr,
                                        nullptr,
                                        options.get()));
}

} // namespace

TiffHandle openTiffMemory(TiffMemory& memory, const char* mode, TiffErrors& errors) {
    return openThrough(memoryAccess, &memory, mode, errors, 0);
}

TiffHandle openTiffDescriptor(TiffDescriptor& file,
                              const char* mode,
                              TiffErrors& errors,
                              tmsize_t largestAllocation) {
    return openThrough(fileAccess, &file, mode, errors, largestAllocation);
}

TiffFile::TiffFile(const std::string& path, tmsize_t largestAllocation)
    : file_(openRegularFile(path)) {
    if (!file_)
        return;
    access_.number = file_->descriptor.number();
    tiff_ = openTiffDescriptor(access_, "rm", errors_, largestAllocation);
}

} // namespace paperline
