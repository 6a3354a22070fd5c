// A data source manager whose calls the test answers itself: it sees the standard's records as they
// cross the library's border.
#pragma once

#include <cstdint>

namespace paperline::test {

using RecordingHandler = uint16_t (*)(void* origin,
                                      void* destination,
                                      uint32_t dataGroup,
                                      uint16_t dataArgumentType,
                                      uint16_t message,
                                      void* data);
// The library's second entry: extern "C" void setRecordingHandler(RecordingHandler).
using SetRecordingHandler = void (*)(RecordingHandler);

} // namespace paperline::test
