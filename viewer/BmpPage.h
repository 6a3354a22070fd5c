// Reads our own colour BMP files as pictures for drawing.
#pragma once

#include <QImage>

#include <string>

namespace paperline {

// The picture of a file with 24 bits per pixel, uncompressed, last row first. Null for other and
// truncated files, and without memory.
QImage readColourBmp(const std::string& path);

} // namespace paperline
