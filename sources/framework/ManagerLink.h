// The way back to the data source manager: its entry, learnt by DAT_ENTRYPOINT, and its memory.
#pragma once

#include "twain/records/StandardRecords.h"

#include <cstdint>

namespace paperline::sources {

class ManagerLink {
public:
    // False when the record has no entry or misses one of the memory functions.
    [[nodiscard]] bool setEntryPoint(const twain::abi::EntryPoint& entryPoint);
    // A callback that a manager without a notification service passed on to the source.
    void setCallback(void* callback) { callback_ = callback; }

    // Tells the application something through the manager. False when there is no way to it, or
    // the manager refused.
    [[nodiscard]] bool
    notify(twain::abi::Identity source, twain::abi::Identity application, uint16_t message) const;

    // Memory that the application frees. The C library's own where the manager gave no functions,
    // as the standard has it for managers without them.
    twain::abi::Handle allocate(uint32_t byteCount) const;
    void release(twain::abi::Handle handle) const;
    void* lock(twain::abi::Handle handle) const;
    void unlock(twain::abi::Handle handle) const;

private:
    twain::abi::EntryPoint entryPoint_{};
    void* callback_ = nullptr;
};

// A locked handle, unlocked at the end of its scope.
class LockedHandle {
public:
    LockedHandle(const ManagerLink& link, twain::abi::Handle handle)
        : link_(link), handle_(handle), bytes_(handle != nullptr ? link.lock(handle) : nullptr) {}
    ~LockedHandle() {
        if (bytes_ != nullptr)
            link_.unlock(handle_);
    }
    LockedHandle(const LockedHandle&) = delete;
    LockedHandle& operator=(const LockedHandle&) = delete;

    uint8_t* bytes() const { return static_cast<uint8_t*>(bytes_); }

private:
    const ManagerLink& link_;
    twain::abi::Handle handle_;
    void* bytes_;
};

} // namespace paperline::sources
