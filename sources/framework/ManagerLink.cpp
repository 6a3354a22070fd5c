#include "sources/framework/ManagerLink.h"

#include <bit>
#include <cstdlib>

namespace paperline::sources {

using twain::abi::Handle;

bool ManagerLink::setEntryPoint(const twain::abi::EntryPoint& entryPoint) {
    if (entryPoint.DSM_Entry == nullptr || entryPoint.DSM_MemAllocate == nullptr ||
        entryPoint.DSM_MemFree == nullptr || entryPoint.DSM_MemLock == nullptr ||
        entryPoint.DSM_MemUnlock == nullptr)
        return false;
    entryPoint_ = entryPoint;
    return true;
}

bool ManagerLink::notify(twain::abi::Identity source,
                         twain::abi::Identity application,
                         uint16_t message) const {
    auto send = [&](twain::abi::EntryFunction entry) {
        return entry(&source, &application, twain::DG_CONTROL, twain::DAT_NULL, message, nullptr) ==
               twain::TWRC_SUCCESS;
    };
    if (entryPoint_.DSM_Entry != nullptr && send(entryPoint_.DSM_Entry))
        return true;
    return callback_ != nullptr && send(std::bit_cast<twain::abi::EntryFunction>(callback_));
}

Handle ManagerLink::allocate(uint32_t byteCount) const {
    return entryPoint_.DSM_MemAllocate != nullptr ? entryPoint_.DSM_MemAllocate(byteCount)
                                                  : std::calloc(1, byteCount);
}

void ManagerLink::release(Handle handle) const {
    if (entryPoint_.DSM_MemFree != nullptr)
        entryPoint_.DSM_MemFree(handle);
    else
        std::free(handle);
}

void* ManagerLink::lock(Handle handle) const {
    return entryPoint_.DSM_MemLock != nullptr ? entryPoint_.DSM_MemLock(handle) : handle;
}

void ManagerLink::unlock(Handle handle) const {
    if (entryPoint_.DSM_MemUnlock != nullptr)
        entryPoint_.DSM_MemUnlock(handle);
}

} // namespace paperline::sources
