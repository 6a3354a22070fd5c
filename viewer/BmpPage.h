// Bitmap files as this program writes them in colour, read straight into what is drawn.
#pragma once

#include <QImage>

#include <string>

namespace paperline {

// The picture of a file of 24 bits a pixel, uncompressed, its last row first. Null for every other
// file, one that ends early, and when memory runs out.
QImage readColourBmp(const std::string& path);

} // namespace paperline
