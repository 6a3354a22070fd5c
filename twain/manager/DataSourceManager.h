// The application's entry to TWAIN. DSM_Entry takes the application's own records, loads the data
// source manager library and converts every record to the standard's 64-bit Linux layout and back.
#pragma once

#include "twain/records/TwainTypes.h"

#include <functional>
#include <optional>
#include <string>

namespace paperline {

using DsmEntry = std::function<TW_UINT16(TW_IDENTITY* origin,
                                         TW_IDENTITY* destination,
                                         TW_UINT32 dataGroup,
                                         TW_UINT16 dataArgumentType,
                                         TW_UINT16 message,
                                         TW_MEMREF data)>;

// A callback that the application registers, with its own records.
using TwainCallback = TW_UINT16 (*)(TW_IDENTITY* origin,
                                    TW_IDENTITY* destination,
                                    TW_UINT32 dataGroup,
                                    TW_UINT16 dataArgumentType,
                                    TW_UINT16 message,
                                    TW_MEMREF data);

TW_UINT16 DSM_Entry(TW_IDENTITY* origin,
                    TW_IDENTITY* destination,
                    TW_UINT32 dataGroup,
                    TW_UINT16 dataArgumentType,
                    TW_UINT16 message,
                    TW_MEMREF data);

// Which records are converted:
// - The application's identity is never changed: the Id and the flags that the manager gives it are
//   kept here. Identities of sources carry the manager's Id.
// - Identities of sources are filled in on TWRC_SUCCESS and TWRC_CHECKSTATUS, other records on
// every
//   code but TWRC_FAILURE.
// - DAT_CAPABILITY is passed on in the standard's layout (twain::abi::Capability).
// - Calls without data are passed on. Only DAT_USERINTERFACE gets a zeroed record, because sources
//   read it without checking. Other kinds of data are refused with TWRC_FAILURE.

// Replaces the library, for tests. An empty function restores it.
void setDsmEntry(DsmEntry entry);

// Why a source could not be opened or enabled, or a transfer failed. The source is asked right
// after the call, because the next one may clear it.
struct SourceFailure {
    TW_UINT16 conditionCode = 0; // twain::TWCC_*
    std::string text;            // the source's own words, may be empty
};
// The first failure since the last call of this function.
std::optional<SourceFailure> takeSourceFailure();

// Called before and after every call into the manager or a source, so that a watchdog notices when
// a call does not return. Both may be empty.
struct DsmCallObserver {
    std::function<void(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message)>
        willCall;
    std::function<void(TW_UINT16 returnCode)> didCall;
};
void setDsmCallObserver(DsmCallObserver observer);

} // namespace paperline
