// Our status and an English text for each SANE status; docs/sane.md has the same table.
#pragma once

#include "sources/framework/ScanTypes.h"

namespace paperline::sources {

// The numbers of the SANE standard.
enum class SaneStatus : int {
    good = 0,
    unsupported,
    cancelled,
    deviceBusy,
    inval,
    eof,
    jammed,
    noDocs,
    coverOpen,
    ioError,
    noMem,
    accessDenied,
};

// ioError for unknown numbers, and for eof outside of reading.
ScanStatus scanStatus(SaneStatus status);

// Empty for good.
const char* statusText(SaneStatus status);

} // namespace paperline::sources
