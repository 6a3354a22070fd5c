// Draws a page scaled into the middle of a transparent area.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"
#include "codecs/pixels/Geometry.h"

#include <memory>

namespace paperline {

// Where a source lies in the target when it keeps its proportions: the smaller of the two factors
// scales it, and the side with room to spare is centred. Factors are single precision.
Rect placeProportionally(Size sourcePoints, Size targetPoints);

// One pixel a point, 32 bits (red, green, blue, alpha), each the average of the page's area that it
// covers; alpha tells how much of the pixel the page covers. Nothing when the page is not of 1, 8,
// 24 or 32 bits, the target is smaller than a point, or memory runs out.
[[nodiscard]] std::shared_ptr<BitmapImageRep>
drawScaled(const BitmapImageRep& page, Size targetPoints, const Rect& place);

} // namespace paperline
