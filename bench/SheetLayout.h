// Sheets as offices scan them: letters, reports with a photograph, tables. Every number gives
// another sheet, and always the same one.
#pragma once

#include "sources/software/Drawing.h"

#include <vector>

namespace paperline::bench {

// A4.
inline constexpr double sheetWidthMillimetres = 210;
inline constexpr double sheetHeightMillimetres = 297;

struct PhotographPlace {
    double left = 0, top = 0, width = 0, height = 0; // millimetres
};

struct Sheet {
    sources::Drawing drawing;
    std::vector<PhotographPlace> photographs; // drawn, but still without the grain of a photograph
};

Sheet layOutSheet(int number, double dpi);

} // namespace paperline::bench
