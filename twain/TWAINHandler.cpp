#include "twain/TWAINHandler.h"

#include "twain/records/TwainConstants.h"

namespace paperline {

namespace {

constexpr int32_t managerNotOpen = -1;
constexpr int32_t selectionImpossible = 0xffff;

} // namespace

TWAINHandler::TWAINHandler(const ApplicationStrings& strings) {
    appIdentity.Id = 1; // not left to the manager
    appIdentity.Version.MajorNum = 1;
    appIdentity.Version.MinorNum = 0;
    appIdentity.Version.Language = twain::TWLG_USA;
    appIdentity.Version.Country = twain::TWCY_USA;
    appIdentity.Version.Info = strings.versionText;
    appIdentity.ProtocolMajor = 1;
    appIdentity.ProtocolMinor = 9;
    appIdentity.SupportedGroups = twain::DG_CONTROL | twain::DG_IMAGE;
    appIdentity.Manufacturer = strings.manufacturer;
    appIdentity.ProductFamily = strings.productFamily;
    appIdentity.ProductName = strings.productName;
}

TWAINHandler::~TWAINHandler() {
    if (dsEnabled) {
        TW_USERINTERFACE none{};
        DisableDS(&none);
    }
    if (dsOpen)
        CloseDS();
    if (dsmOpen)
        CloseDSM();
}

int32_t TWAINHandler::callManager(TW_UINT32 dataGroup,
                                  TW_UINT16 dataArgumentType,
                                  TW_UINT16 message,
                                  TW_MEMREF data) {
    return DSM_Entry(&appIdentity, nullptr, dataGroup, dataArgumentType, message, data);
}

bool TWAINHandler::opensManager() {
    return dsmOpen || OpenDSM() == twain::TWRC_SUCCESS;
}

int32_t TWAINHandler::OpenDSM() {
    dsmOpen = true;
    return callManager(twain::DG_CONTROL, twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr);
}

int32_t TWAINHandler::CloseDSM() {
    if (!dsmOpen)
        return managerNotOpen;
    callManager(twain::DG_CONTROL, twain::DAT_PARENT, twain::MSG_CLOSEDSM, nullptr);
    dsmOpen = false;
    dsOpen = false;
    dsEnabled = false;
    return twain::TWRC_SUCCESS;
}

int32_t TWAINHandler::fetchIdentity(TW_UINT16 message, TW_IDENTITY& identity) {
    const int32_t code = callManager(twain::DG_CONTROL, twain::DAT_IDENTITY, message, &identity);
    if (code == twain::TWRC_SUCCESS)
        dsIdentity = identity;
    dsIdentityValid = true;
    return code;
}

int32_t TWAINHandler::UserSelect() {
    TW_IDENTITY chosen{};
    return opensManager() ? fetchIdentity(twain::MSG_USERSELECT, chosen) : selectionImpossible;
}

int32_t TWAINHandler::GetIdentity(TW_UINT16 message, TW_IDENTITY& identity) {
    return opensManager() ? fetchIdentity(message, identity) : managerNotOpen;
}

int32_t TWAINHandler::OpenDS() {
    if (!opensManager())
        return managerNotOpen;
    const int32_t code =
        callManager(twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_OPENDS, &dsIdentity);
    if (code == twain::TWRC_SUCCESS)
        dsOpen = true;
    return code;
}

int32_t TWAINHandler::CloseDS() {
    const int32_t code =
        callManager(twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_CLOSEDS, &dsIdentity);
    dsOpen = false;
    dsEnabled = false;
    return code;
}

int32_t TWAINHandler::setEnabled(bool enabledAfterwards,
                                 TW_UINT16 message,
                                 TW_USERINTERFACE* userInterface) {
    const int32_t code =
        DSCall(twain::DG_CONTROL, twain::DAT_USERINTERFACE, message, userInterface);
    if (code == twain::TWRC_SUCCESS)
        dsEnabled = enabledAfterwards;
    return code;
}

int32_t TWAINHandler::EnableDS(TW_USERINTERFACE* userInterface) {
    return setEnabled(true, twain::MSG_ENABLEDS, userInterface);
}

int32_t TWAINHandler::EnableDSUIOnly(TW_USERINTERFACE* userInterface) {
    return setEnabled(true, twain::MSG_ENABLEDSUIONLY, userInterface);
}

int32_t TWAINHandler::DisableDS(TW_USERINTERFACE* userInterface) {
    return setEnabled(false, twain::MSG_DISABLEDS, userInterface);
}

int32_t TWAINHandler::RegisterCallback(TwainCallback callback, uint64_t refCon) {
    if (!opensManager())
        return managerNotOpen;
    TW_CALLBACK record{};
    record.CallBackProc = reinterpret_cast<void*>(callback);
    record.RefCon = static_cast<uint32_t>(refCon);
    return callManager(
        twain::DG_CONTROL, twain::DAT_CALLBACK, twain::MSG_REGISTER_CALLBACK, &record);
}

int32_t TWAINHandler::DSMCall(TW_UINT32 dataGroup,
                              TW_UINT16 dataArgumentType,
                              TW_UINT16 message,
                              TW_MEMREF data) {
    if (!dsmOpen)
        return managerNotOpen;
    return callManager(dataGroup, dataArgumentType, message, data);
}

int32_t TWAINHandler::DSCall(TW_UINT32 dataGroup,
                             TW_UINT16 dataArgumentType,
                             TW_UINT16 message,
                             TW_MEMREF data) {
    return DSM_Entry(&appIdentity, &dsIdentity, dataGroup, dataArgumentType, message, data);
}

} // namespace paperline
