// All calls to the data source manager, with the identities and the state of the session. Main
// thread only. Operations return the manager's return code (0 to 0xffff), or -1 when it does not
// open.
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
    // Disables and closes the source and closes the manager, as far as the session has come.
    virtual ~TWAINHandler();
    TWAINHandler(const TWAINHandler&) = delete;
    TWAINHandler& operator=(const TWAINHandler&) = delete;

    // On purpose, a manager that fails to open counts as open.
    int32_t OpenDSM();
    // 0; or -1, without a call, when the manager is not open.
    int32_t CloseDSM();
    // The manager's own selection dialog. 0xffff, not -1, when the manager does not open.
    int32_t UserSelect();
    // MSG_GETFIRST, MSG_GETNEXT or MSG_GETDEFAULT (the manager's default source). On success
    // `identity` becomes the current source.
    int32_t GetIdentity(TW_UINT16 message, TW_IDENTITY& identity);
    int32_t OpenDS();
    int32_t CloseDS();
    int32_t EnableDS(TW_USERINTERFACE* userInterface);
    int32_t EnableDSUIOnly(TW_USERINTERFACE* userInterface);
    int32_t DisableDS(TW_USERINTERFACE* userInterface); // may be null
    // Of `refCon` the low 32 bits.
    int32_t RegisterCallback(TwainCallback callback, uint64_t refCon);
    int32_t
    DSMCall(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message, TW_MEMREF data);
    int32_t
    DSCall(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message, TW_MEMREF data);
    TW_IDENTITY* GetDSIdentity() { return &dsIdentity; }

    bool dsmOpen = false;
    bool dsOpen = false;
    bool dsIdentityValid = false; // a source was selected or listed
    bool dsEnabled = false;
    TW_IDENTITY appIdentity{}; // origin of every call
    TW_IDENTITY dsIdentity{};  // destination of every call to the source

private:
    [[nodiscard]] bool opensManager(); // or finds it open
    int32_t
    callManager(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message, TW_MEMREF data);
    int32_t fetchIdentity(TW_UINT16 message, TW_IDENTITY& identity);
    int32_t setEnabled(bool enabledAfterwards, TW_UINT16 message, TW_USERINTERFACE* userInterface);
};

} // namespace paperline
