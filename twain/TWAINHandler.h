// The one way to the data source manager: holds the application's identity and the current data
// source's, remembers how far the session has come, and makes every call.
//
// Main thread only. Nothing is shown or logged here; every failure is a code handed back: the
// manager's return code as it came (0 to 0xffff), or -1 when the manager could not be opened first.
#pragma once

#include "twain/manager/DataSourceManager.h"
#include "twain/records/TwainTypes.h"

#include <cstdint>

namespace paperline {

class TWAINHandler {
public:
    struct ApplicationStrings {
        TW_STR32 manufacturer;
        TW_STR32 productFamily;
        TW_STR32 productName;
        TW_STR32 versionText;
    };

    explicit TWAINHandler(const ApplicationStrings& strings);
    // Takes the session down in reverse: disables, closes the source, closes the manager, each if
    // it was reached.
    virtual ~TWAINHandler();
    TWAINHandler(const TWAINHandler&) = delete;
    TWAINHandler& operator=(const TWAINHandler&) = delete;

    // Marks the manager open whatever it answers; later calls go to it as if it were.
    int32_t OpenDSM();
    // -1 without a call when the manager was never opened, else 0.
    int32_t CloseDSM();
    // The manager's own selection dialog; 0xffff when the manager does not open.
    int32_t UserSelect();
    // MSG_GETFIRST, MSG_GETNEXT or MSG_GETDEFAULT into `identity`, which becomes the current source
    // on success.
    int32_t GetIdentity(TW_UINT16 message, TW_IDENTITY& identity);
    int32_t OpenDS();
    int32_t CloseDS();
    int32_t EnableDS(TW_USERINTERFACE* userInterface);
    int32_t EnableDSUIOnly(TW_USERINTERFACE* userInterface);
    int32_t DisableDS(TW_USERINTERFACE* userInterface); // null: no record is sent
    // Only the low 32 bits of `refCon` are handed on.
    int32_t RegisterCallback(TwainCallback callback, uint64_t refCon);
    int32_t
    DSMCall(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message, TW_MEMREF data);
    int32_t
    DSCall(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message, TW_MEMREF data);
    TW_IDENTITY* GetDSIdentity() { return &dsIdentity; }

    bool dsmOpen = false;         // the manager has been opened
    bool dsOpen = false;          // a source is open
    bool dsIdentityValid = false; // dsIdentity holds a chosen or enumerated source
    bool dsEnabled = false;       // the source has been enabled
    TW_IDENTITY appIdentity{};    // origin of every call
    TW_IDENTITY dsIdentity{};     // destination of every call to the source

private:
    [[nodiscard]] bool opensManager(); // true when it is open or opens now
    int32_t
    callManager(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message, TW_MEMREF data);
    int32_t fetchIdentity(TW_UINT16 message, TW_IDENTITY& identity);
    int32_t setEnabled(bool enabledAfterwards, TW_UINT16 message, TW_USERINTERFACE* userInterface);
};

} // namespace paperline
