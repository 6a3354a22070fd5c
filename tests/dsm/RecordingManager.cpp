#include "RecordingManager.h"

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

paperline::test::RecordingHandler handler = nullptr;

} // namespace

EXPORTED void setRecordingHandler(paperline::test::RecordingHandler newHandler) {
    handler = newHandler;
}

EXPORTED uint16_t DSM_Entry(void* origin,
                            void* destination,
                            uint32_t dataGroup,
                            uint16_t dataArgumentType,
                            uint16_t message,
                            void* data) {
    return handler(origin, destination, dataGroup, dataArgumentType, message, data);
}
