// The platform's TWAIN entry point. The application calls DSM_Entry with its own records; behind it
// the data source manager library is loaded and every record is converted to the standard Linux
// layout and back.
#pragma once

#include "twain/records/TwainTypes.h"

#include <cstddef>
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

// Signature of a callback that the application registers; the records are the application's.
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

// How the records travel:
// - The application's own record keeps what the application set; the Id and the flags that the
//   manager gave it stay behind this entry. Records of sources carry the manager's Id.
// - A source's record that was asked for is changed only by TWRC_SUCCESS and TWRC_CHECKSTATUS, any
//   other record by every code but TWRC_FAILURE.
// - DAT_CAPABILITY goes through untouched, in the standard's layout (twain::abi::Capability).
// - Without data a triplet goes through as it is, except that DAT_USERINTERFACE gets a zeroed
//   record: sources read it without a look. Any other data is refused with TWRC_FAILURE.

// Replaces what DSM_Entry does (tests script it); an empty function restores the loaded library.
void setDsmEntry(DsmEntry entry);

// File of the library that is loaded: PAPERLINE_DSM, else the one in the bundle's Frameworks
// folder.
std::string dataSourceManagerFile();

// A handle that a source hands over (the picture of a native transfer) belongs to the application.
// These are the loaded manager's functions, or the C library's where it has none.
void* lockDsmMemory(TW_HANDLE handle);
void unlockDsmMemory(TW_HANDLE handle);
void freeDsmMemory(TW_HANDLE handle);
// Bytes of the block, perhaps a few more than were asked for; 0 when another maker's manager owns
// it and does not tell.
size_t dsmMemorySize(TW_HANDLE handle);

// Why a source did not do what it was asked for: opening, enabling, or a step of a transfer. Asked
// of the source right after the call, while it still knows.
struct SourceFailure {
    TW_UINT16 conditionCode = 0; // twain::TWCC_*
    std::string text;            // the source's own words, may be empty
};
// The first failure since the last call of this function; nothing when all went well.
std::optional<SourceFailure> takeSourceFailure();

// Called after every call into the manager or a source returns, and before it starts: a watchdog
// sees a hang from another thread. Empty: none.
struct DsmCallObserver {
    std::function<void(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message)>
        willCall;
    std::function<void(TW_UINT16 returnCode)> didCall;
};
void setDsmCallObserver(DsmCallObserver observer);

} // namespace paperline
