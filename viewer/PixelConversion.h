// From the program's pages and rectangles to Qt's, and back.
#pragma once

#include "codecs/pixels/Geometry.h"
#include "codecs/pixels/Image.h"

#include <QImage>
#include <QRect>

namespace paperline {

// A page of 1 bit (polarity: 0 is black), 8 or 24 bits as grey or 32-bit colour. Null for another
// layout, and without memory.
QImage qtImage(const BitmapImageRep& page);

// On white, in the format that Qt draws fastest: 8-bit grey or 32-bit colour.
QImage opaqueImage(const QImage& image);

// An image of 8 or 24 bits, one point per pixel. Invalid without pixels or memory.
Image imageObject(const QImage& picture);

Rect rectOf(const QRect& rect);

} // namespace paperline
