// The data source manager's entry and memory functions, received by DAT_ENTRYPOINT.
#pragma once

#include "twain/records/StandardRecords.h"

#include <cstdint>

namespace paperline::sources {

class ManagerLink {
public:
    // False when the record lacks the entry or a memory function.
    [[nodiscard]] bool setEntryPoint(const twain::abi::EntryPoint& entryPoint);
    // The application's callback, from managers that pass it on to the source.
    void setCallback(void* callback) { callback_ = callback; }

    // Sends the application a message. False when it cannot be reached, or the manager refused.
    [[nodiscard]] bool
    notify(twain::abi::Identity source, twain::abi::Identity application, uint16_t message) const;

    // Memory that the application frees; the C library's when the manager gave no functions, as the
    // standard prescribes.
    twain::abi::Handle allocate(uint32_t byteCount) const;
    void release(twain::abi::Handle handle) const;
    void* lock(twain::abi::Handle handle) const;
    void unlock(twain::abi::Handle handle) const;

private:
    twain::abi::EntryPoint entryPoint_{};
    void* callback_ = nullptr;
};

// Locks a handle for its scope.
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
