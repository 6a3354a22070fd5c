// Memory that a source hands to the application, such as the picture of a native transfer. It then
// belongs to the application. The loaded manager's functions are used, or the C library's where it
// has none.
#pragma once

#include "twain/records/TwainTypes.h"

#include <cstddef>

namespace paperline {

void* lockDsmMemory(TW_HANDLE handle);
void unlockDsmMemory(TW_HANDLE handle);
void freeDsmMemory(TW_HANDLE handle);
// Bytes of the block, perhaps a few more than were asked for; 0 when another maker's manager owns
// it and does not tell.
size_t dsmMemorySize(TW_HANDLE handle);

} // namespace paperline
