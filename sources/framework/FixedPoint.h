// TW_FIX32 numbers, and the units that lengths and resolutions are given in.
#pragma once

#include "sources/framework/ScanTypes.h"
#include "twain/records/StandardRecords.h"

#include <cstdint>

namespace paperline::sources {

// The nearest 65536th; numbers outside -32768 to 32767 become the nearest end, NaN becomes 0.
twain::abi::Fix32 toFix32(double number);
double fromFix32(twain::abi::Fix32 number);

// The same as one 32-bit item of a container: the whole part in the low half.
uint32_t fix32Item(double number);
double fix32FromItem(uint32_t item);

// Inches, or dots per inch, as ICAP_UNITS says. Resolutions in dots per inch are whole numbers:
// applications do sums with the whole part alone.
double lengthInUnits(double inches, uint16_t units);
double inchesFromUnits(double length, uint16_t units);
double resolutionInUnits(double dpi, uint16_t units);
double dpiFromUnits(double resolution, uint16_t units);

} // namespace paperline::sources
