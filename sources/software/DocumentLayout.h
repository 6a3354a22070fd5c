// A page of an office report: letterhead, text, a chart, a photograph, a table and a signature,
// laid out on a sheet 210 millimetres wide.
#pragma once

#include "sources/software/Drawing.h"

namespace paperline::sources {

inline constexpr double reportWidthMillimetres = 210;

// Everything but the footer. For other sheet widths scale the resolution; a short sheet is cut.
Drawing drawReport(double dpi);
// `bottom` is the sheet's height.
void addFooter(Drawing& page, double bottom, int pageNumber, int pageCount);

} // namespace paperline::sources
