// What a SANE status means here. docs/sane.md has the same table for people.
#pragma once

#include "sources/framework/ScanTypes.h"

namespace paperline::sources {

// SANE's numbers, as its standard fixes them.
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

// eof stands for the end of a frame where one is expected; anywhere else it is an ioError. Numbers
// that the standard does not know are ioError too.
ScanStatus scanStatus(SaneStatus status);

// An English sentence; empty for good.
const char* statusText(SaneStatus status);

} // namespace paperline::sources
