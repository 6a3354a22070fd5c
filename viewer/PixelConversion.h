// Between the program's pages and rectangles and Qt's.
#pragma once

#include "codecs/pixels/Geometry.h"
#include "codecs/pixels/Image.h"

#include <QImage>
#include <QRect>

namespace paperline {

// A page of 1 (0 is black), 8 or 24 bits as grey or 32-bit colour. Null for another layout, or when
// memory runs out.
QImage qtImage(const BitmapImageRep& page);

// The same pixels without transparency, in the format that draws and scales fastest: 8-bit grey or
// 32-bit colour. Transparent parts become white.
QImage opaqueImage(const QImage& image);

// An image object of 8 or 24 bits, one point a pixel. Not valid when there are no pixels or memory
// runs out.
Image imageObject(const QImage& picture);

Rect rectOf(const QRect& rect);

} // namespace paperline
