// The platform's TWAIN entry point. The application calls DSM_Entry with its own records; behind it
// the data source manager library is loaded and every record is converted to the standard Linux
// layout and back.
#pragma once

#include "twain/TwainTypes.h"

#include <functional>
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

// Replaces what DSM_Entry does (tests script it); an empty function restores the loaded library.
void setDsmEntry(DsmEntry entry);

// File of the library that is loaded: PAPERLINE_DSM, else the one in the bundle's Frameworks
// folder.
std::string dataSourceManagerFile();

// Called after every call into the manager or a source returns, and before it starts: a watchdog
// sees a hang from another thread. Empty: none.
struct DsmCallObserver {
    std::function<void(TW_UINT32 dataGroup, TW_UINT16 dataArgumentType, TW_UINT16 message)>
        willCall;
    std::function<void(TW_UINT16 returnCode)> didCall;
};
void setDsmCallObserver(DsmCallObserver observer);

} // namespace paperline
