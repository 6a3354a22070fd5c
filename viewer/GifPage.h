// Reads GIF files as pictures for drawing.
#pragma once

#include <QImage>

#include <string>

namespace paperline {

// The first picture of the file with its surroundings, on white: 8-bit grey when all its colours
// are, else 32-bit colour. Null for a file that decodeGif() refuses, and without memory.
QImage readGif(const std::string& path);

} // namespace paperline
