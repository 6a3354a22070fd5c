// An alphabet of strokes, drawn with a round pen: text looks the same at every resolution.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace paperline::sources {

// In font units capitals are 14 high, small letters 10, and descenders reach 4 below the base line.
inline constexpr double fontUnitsPerEm = 20;

struct StrokePoint {
    double x = 0;
    double y = 0; // upwards from the base line
};
using Stroke = std::vector<StrokePoint>; // a polyline; two points may coincide for a dot

struct GlyphStrokes {
    std::vector<Stroke> strokes; // curves as short lines
    double advance = 0;          // to the next character's origin, in font units
};

// Missing characters are as wide as a space and have no strokes.
const GlyphStrokes& glyphStrokes(char character);

double textWidth(std::string_view text); // in font units

// A smooth curve through the points, as a polyline.
Stroke smoothStroke(const Stroke& points);

} // namespace paperline::sources
