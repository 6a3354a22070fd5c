// Handles that a source hands to the application are the manager's memory.
#include "twain/manager/DataSourceManager.h"
#include "twain/manager/DataSourceManagerLibrary.h"

#include <malloc.h>

#include <cstdlib>

namespace paperline {

void* lockDsmMemory(TW_HANDLE handle) {
    const DsmLibrary* library = currentDsmLibrary();
    const bool own = library != nullptr && library->entryPoint.DSM_MemLock != nullptr;
    return own ? library->entryPoint.DSM_MemLock(handle) : handle;
}

void unlockDsmMemory(TW_HANDLE handle) {
    const DsmLibrary* library = currentDsmLibrary();
    if (library != nullptr && library->entryPoint.DSM_MemUnlock != nullptr)
        library->entryPoint.DSM_MemUnlock(handle);
}

void freeDsmMemory(TW_HANDLE handle) {
    const DsmLibrary* library = currentDsmLibrary();
    if (library != nullptr && library->entryPoint.DSM_MemFree != nullptr)
        library->entryPoint.DSM_MemFree(handle);
    else
        std::free(handle);
}

size_t dsmMemorySize(TW_HANDLE handle) {
    const char* other = std::getenv("PAPERLINE_DSM");
    const bool ours = other == nullptr || other[0] == '\0';
    const DsmLibrary* library = currentDsmLibrary();
    const bool ofTheCLibrary = library == nullptr || library->entryPoint.DSM_MemAllocate == nullptr;
    return ours || ofTheCLibrary ? ::malloc_usable_size(handle) : 0;
}

} // namespace paperline
