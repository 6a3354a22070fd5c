// Where a row of the page list draws its thumbnail and caption. Points, y growing downward.
#pragma once

#include "codecs/pixels/Geometry.h"
#include "codecs/pixels/PageProperties.h"

#include <cstdint>

namespace paperline {

// The thumbnail of a page in the cell `bounds`. Portrait pages are 123 high. Others are 128 wide
// with a height scaled from 123, on purpose a little too wide. For a page of 0 x 0 the result has
// NaNs.
Rect imageRectForBounds(const Rect& bounds, PixelSize page);

// The title line beside the thumbnail, clipped to the cell.
Rect titleRectForBounds(const Rect& bounds, Size titleText);

// The caption, placed by its number of UTF-16 units. Zero without any. More than 20 wrap an
// unsigned difference, so that x lies far outside.
Rect subtitleRectForBounds(const Rect& bounds,
                           const Rect& titleBounds,
                           const Rect& imageBounds,
                           uint64_t characterCount);

// Whether a painter can draw the rectangle: not empty, finite and not too large.
bool isDrawable(const Rect& rect);

} // namespace paperline
