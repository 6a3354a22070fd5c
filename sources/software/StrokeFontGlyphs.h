// The alphabet's drawings as text.
#pragma once

#include <span>

namespace paperline::sources {

struct GlyphDrawing {
    char character;
    double width;        // of the drawing, in font units
    const char* strokes; // "x,y x,y" a stroke, '|' between strokes, '~' in front of a curve's first
                         // point
};

std::span<const GlyphDrawing> glyphDrawings();

} // namespace paperline::sources
