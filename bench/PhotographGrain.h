// Structure of all sizes inside a photograph, from cloud to grass.
#pragma once

#include "bench/SheetLayout.h"
#include "codecs/pixels/BitmapImageRep.h"

namespace paperline::bench {

// Lightens and darkens the place of an 8 or 24-bit page.
void addGrain(BitmapImageRep& page, const PhotographPlace& place, double dpi);

} // namespace paperline::bench
