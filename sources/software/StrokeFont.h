// A single-stroke alphabet of our own, drawn with a round pen at any size: pages look the same at
// 50 and at 1200 dots per inch.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace paperline::sources {

// Units of the alphabet: capitals are 14 high, small letters 10, descenders reach 4 below the line,
// one em is 20.
inline constexpr double fontUnitsPerEm = 20;

struct StrokePoint {
    double x = 0;
    double y = 0; // upwards from the base line
};
using Stroke = std::vector<StrokePoint>; // a polyline; two points may coincide for a dot

struct GlyphStrokes {
    std::vector<Stroke> strokes; // curves already cut into short lines
    double advance = 0;          // to the next character's origin, in font units
};

// Characters that the alphabet lacks are as wide as a space and leave nothing.
const GlyphStrokes& glyphStrokes(char character);

double textWidth(std::string_view text); // in font units

// A smooth curve through the points, as a polyline.
Stroke smoothStroke(const Stroke& points);

} // namespace paperline::sources
