// TW_FIX32 numbers, and the units that lengths and resolutions are given in.
#pragma once

#include "sources/framework/ScanTypes.h"
#include "twain/records/StandardRecords.h"

#include <cstdint>

namespace paperline::sources {

// Rounded to 1/65536; numbers out of range become the nearest limit, NaN becomes 0.
twain::abi::Fix32 toFix32(double number);
double fromFix32(twain::abi::Fix32 number);

// As a 32-bit item of a container: the whole part in the low half.
uint32_t fix32Item(double number);
double fix32FromItem(uint32_t item);

// `units` as in ICAP_UNITS. Resolutions in dots per inch are rounded: applications use the whole
// part only.
double lengthInUnits(double inches, uint16_t units);
double inchesFromUnits(double length, uint16_t units);
double resolutionInUnits(double dpi, uint16_t units);
double dpiFromUnits(double resolution, uint16_t units);

} // namespace paperline::sources
