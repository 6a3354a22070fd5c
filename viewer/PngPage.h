// Reads our own PNG files as pictures for drawing.
#pragma once

#include <QImage>

#include <string>

namespace paperline {

// 8-bit grey or 32-bit colour. Null for files of other programs, small or damaged ones, and without
// memory.
QImage readOwnPng(const std::string& path);

} // namespace paperline
