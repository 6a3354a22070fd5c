// Numbers the times a data source was enabled, so that a message that arrives late is told from one
// of the scan under way, and remembers what callbacks told. Any thread may ask.
#pragma once

#include <cstdint>

namespace paperline {

uint32_t currentSession();
void beginSession(); // before MSG_ENABLEDS: a source may call back inside that call

// Whether the source has a page ready that nobody has begun to fetch. Such a source can be neither
// disabled nor closed before the page is discarded.
void noteTransferReady();
bool takeTransferReady(); // the answer, and from then on there is none

} // namespace paperline
