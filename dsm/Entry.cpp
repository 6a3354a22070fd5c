// What the library exports: the entry point and the memory functions of the standard interface.
#include "dsm/Log.h"
#include "dsm/Manager.h"

#include <cstdlib>
#include <exception>
#include <new>

using twain::abi::Handle;
using twain::abi::Identity;

#define PAPERLINE_DSM_EXPORT extern "C" __attribute__((visibility("default")))

// Callers on the other side may be written in any language: no exception leaves this function.
PAPERLINE_DSM_EXPORT uint16_t DSM_Entry(Identity* origin,
                                        Identity* destination,
                                        uint32_t dataGroup,
                                        uint16_t dataArgumentType,
                                        uint16_t message,
                                        void* data) {
    try {
        return paperline::dsm::processManager().entry(
            origin, destination, {dataGroup, dataArgumentType, message}, data);
    } catch (const std::exception& error) {
        paperline::dsm::logLine(std::string("a call was given up: ") + error.what());
    } catch (...) {
        paperline::dsm::logLine("a call was given up");
    }
    return twain::TWRC_FAILURE;
}

// Handles are the blocks themselves, from the C library's allocator: sources of the first standard
// use malloc and free on the same handles.
PAPERLINE_DSM_EXPORT Handle DSM_MemAllocate(uint32_t bytes) {
    return std::calloc(1, bytes > 0 ? bytes : 1);
}

PAPERLINE_DSM_EXPORT void DSM_MemFree(Handle handle) {
    std::free(handle);
}

PAPERLINE_DSM_EXPORT void* DSM_MemLock(Handle handle) {
    return handle;
}

PAPERLINE_DSM_EXPORT void DSM_MemUnlock(Handle) {}

void paperline::dsm::fillEntryPoint(twain::abi::EntryPoint& entryPoint) {
    entryPoint.Size = sizeof(twain::abi::EntryPoint);
    entryPoint.DSM_Entry = &DSM_Entry;
    entryPoint.DSM_MemAllocate = &DSM_MemAllocate;
    entryPoint.DSM_MemFree = &DSM_MemFree;
    entryPoint.DSM_MemLock = &DSM_MemLock;
    entryPoint.DSM_MemUnlock = &DSM_MemUnlock;
}
