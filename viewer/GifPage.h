// GIF files as this and usual programs write them, decoded into what is drawn.
#pragma once

#include <QImage>

#include <string>

namespace paperline {

// The first picture of the file on its screen, transparent parts white: 8-bit grey when all its
// colours are, else 32-bit colour. Null for a file that is damaged or unusual (decodeGif), and when
// memory runs out.
QImage readGif(const std::string& path);

} // namespace paperline
