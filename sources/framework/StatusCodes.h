// The return code and condition code for each status of a feed.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>

namespace paperline::sources {

struct TwainResult {
    uint16_t returnCode = 0;    // TWRC_
    uint16_t conditionCode = 0; // TWCC_
};

TwainResult twainResult(ScanStatus status);

// An English sentence for a condition code, where the device gives none.
const char* conditionText(uint16_t conditionCode);

} // namespace paperline::sources
