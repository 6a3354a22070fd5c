// One page from the current data source by buffered memory transfer: the triplets of a page and the
// loops around them, without a decision about what becomes of it.
#pragma once

#include "twain/PageAssembly.h"
#include "twain/TWAINHandler.h"

#include <cstdint>

namespace paperline {

struct ReceivedStrips {
    int32_t code = 0;       // return code of the last strip
    uint32_t rows = 0;      // rows copied into the page
    uint64_t bytes = 0;     // their bytes
    bool isEndless = false; // stopped: no device delivers so many strips
};

// Return code of DAT_IMAGEINFO; `info` is filled on success.
int32_t readImageInfo(TWAINHandler& handler, TW_IMAGEINFO& info);

// Asks for the preferred buffer sizes, as the standard wants it before a transfer. The answer is
// not used: the buffer is always a whole page.
void askBufferSizes(TWAINHandler& handler);

// Asks for strips into the prepared buffers until the source says that the page is over. What no
// strip filled is cleared.
ReceivedStrips receiveStrips(TWAINHandler& handler, PageBuffers& buffers);

// Ends the page. Pages that the source still has; none when it fails. 65535: it does not know.
struct EndedTransfer {
    int32_t code = 0;
    uint16_t pendingPages = 0;
};
EndedTransfer endTransfer(TWAINHandler& handler);

// Throws away the pages that are still pending.
int32_t discardPendingPages(TWAINHandler& handler);

// Disables and closes the source.
void closeSource(TWAINHandler& handler);

} // namespace paperline
