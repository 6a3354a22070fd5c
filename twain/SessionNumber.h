// Numbers the times a data source was enabled, so that a message that arrives late is told from one
// of the scan under way. Any thread may ask.
#pragma once

#include <cstdint>

namespace paperline {

uint32_t currentSession();
void beginSession(); // before MSG_ENABLEDS: a source may call back inside that call

} // namespace paperline
