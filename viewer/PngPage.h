// PNG files as this program writes them, read straight into what is drawn.
#pragma once

#include <QImage>

#include <string>

namespace paperline {

// The picture of a large file as our own writer makes it: 8-bit grey or 32-bit colour. Null for
// every other file, a damaged one, and when memory runs out.
QImage readOwnPng(const std::string& path);

} // namespace paperline
