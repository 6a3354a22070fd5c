// Where one row of the page list draws its thumbnail and caption. Points, y growing downward.
#pragma once

#include "codecs/pixels/Geometry.h"
#include "codecs/pixels/PageProperties.h"

#include <cstdint>

namespace paperline {

// The thumbnail of a page of `page` pixels in the cell `bounds`. Landscape and square pages are 128
// wide with a height scaled from 123, so they come out a little wider than their aspect; portrait
// pages are 123 high. A page without pixels has no height: the result then holds no number.
Rect imageRectForBounds(const Rect& bounds, PixelSize page);

// The title line beside the thumbnail, clipped to the cell.
Rect titleRectForBounds(const Rect& bounds, Size titleText);

// The caption of `characterCount` UTF-16 units, placed by their number. No characters give the zero
// rectangle; more than 20 wrap the unsigned distance and give an x far beyond any drawing surface.
Rect subtitleRectForBounds(const Rect& bounds,
                           const Rect& titleBounds,
                           const Rect& imageBounds,
                           uint64_t characterCount);

// Whether a drawing system can take the rectangle: finite numbers of sensible size, not empty.
bool isDrawable(const Rect& rect);

} // namespace paperline
