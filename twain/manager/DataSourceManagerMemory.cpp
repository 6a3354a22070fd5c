#include "twain/manager/DataSourceManagerMemory.h"

#include "platform/host/Environment.h"
#include "twain/manager/DataSourceManagerLibrary.h"

#include <cstdlib>
#include <malloc.h>

namespace paperline {
namespace {

// Without a library, or one that has no memory functions, every member is null.
twain::abi::EntryPoint managerFunctions() {
    const DsmLibrary* library = currentDsmLibrary();
    return library != nullptr ? library->entryPoint : twain::abi::EntryPoint{};
}

} // namespace

void* lockDsmMemory(TW_HANDLE handle) {
    const auto lock = managerFunctions().DSM_MemLock;
    return lock != nullptr ? lock(handle) : handle;
}

void unlockDsmMemory(TW_HANDLE handle) {
    if (const auto unlock = managerFunctions().DSM_MemUnlock)
        unlock(handle);
}

void freeDsmMemory(TW_HANDLE handle) {
    if (const auto release = managerFunctions().DSM_MemFree)
        release(handle);
    else
        std::free(handle);
}

size_t dsmMemorySize(TW_HANDLE handle) {
    // Our own manager, too, takes its blocks from the C library.
    const bool isOwnManager = environment("PAPERLINE_DSM").empty();
    const bool isOfCLibrary = isOwnManager || managerFunctions().DSM_MemAllocate == nullptr;
    return isOfCLibrary ? ::malloc_usable_size(handle) : 0;
}

} // namespace paperline
