// The TWAIN calls that fetch one page by buffered memory transfer.
#pragma once

#include "twain/PageAssembly.h"
#include "twain/TWAINHandler.h"

#include <cstdint>

namespace paperline {

struct ReceivedStrips {
    int32_t code = 0;       // return code of the last strip
    uint32_t rows = 0;      // rows copied into the page
    uint64_t bytes = 0;     // their bytes
    bool isEndless = false; // stopped by StripGuard
};

// Returns the source's return code.
int32_t readImageInfo(TWAINHandler& handler, TW_IMAGEINFO& info);

// Asks for the preferred buffer sizes, as the standard demands. The answer is not used: the buffer
// holds a whole page.
void askBufferSizes(TWAINHandler& handler);

// Fetches strips until the source ends the page. Rows that no strip filled are cleared.
ReceivedStrips receiveStrips(TWAINHandler& handler, PageBuffers& buffers);

// Ends the page.
struct EndedTransfer {
    int32_t code = 0;
    uint16_t pendingPages = 0; // 0 after a failure; 65535: unknown
};
EndedTransfer endTransfer(TWAINHandler& handler);

int32_t discardPendingPages(TWAINHandler& handler);

void closeSource(TWAINHandler& handler);

} // namespace paperline
