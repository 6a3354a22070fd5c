// Error functions for libpng: errors longjmp to the caller's setjmp, nothing is printed.
#pragma once

#include <png.h>

namespace paperline {

[[noreturn]] inline void leavePng(png_structp png, png_const_charp /*message*/) {
    png_longjmp(png, 1);
}

inline void ignorePngWarning(png_structp /*png*/, png_const_charp /*message*/) {}

} // namespace paperline
