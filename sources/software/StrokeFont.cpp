#include "sources/software/StrokeFont.h"

#include "sources/software/StrokeFontGlyphs.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace paperline::sources {

namespace {

constexpr double letterSpacing = 3.2;
constexpr double spaceAdvance = 6.5;
constexpr int stepsPerCurvePiece = 6;

std::string_view nextWord(std::string_view& text) {
    const size_t start = std::min(text.find_first_not_of(' '), text.size());
    const size_t end = std::min(text.find(' ', start), text.size());
    const std::string_view word = text.substr(start, end - start);
    text.remove_prefix(end);
    return word;
}

double numberOf(std::string_view text) {
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// "x,y x,y ..." with a '~' in front when the points lie on a curve.
Stroke parseStroke(std::string_view text) {
    Stroke points;
    for (auto word = nextWord(text); !word.empty(); word = nextWord(text)) {
        if (word.starts_with('~'))
            word.remove_prefix(1);
        const size_t comma = word.find(',');
        points.push_back({numberOf(word.substr(0, comma)), numberOf(word.substr(comma + 1))});
    }
    return points;
}

GlyphStrokes parseGlyph(const GlyphDrawing& drawing) {
    GlyphStrokes glyph;
    glyph.advance = drawing.width + letterSpacing;
    std::string_view text = drawing.strokes;
    while (!text.empty()) {
        const size_t end = std::min(text.find('|'), text.size());
        const std::string_view part = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const bool curved = part.find('~') != std::string_view::npos;
        Stroke points = parseStroke(part);
        glyph.strokes.push_back(curved ? smoothStroke(points) : std::move(points));
    }
    return glyph;
}

using Alphabet = std::array<GlyphStrokes, 128>;

Alphabet parseAlphabet() {
    Alphabet alphabet;
    for (GlyphStrokes& glyph : alphabet)
        glyph.advance = spaceAdvance;
    for (const GlyphDrawing& drawing : glyphDrawings())
        alphabet[static_cast<size_t>(drawing.character)] = parseGlyph(drawing);
    return alphabet;
}

} // namespace

Stroke smoothStroke(const Stroke& points) {
    if (points.size() < 3)
        return points;
    const size_t last = points.size() - 1;
    const bool closed = points[0].x == points[last].x && points[0].y == points[last].y;
    // Catmull-Rom: each piece's direction at its ends comes from its neighbours.
    auto neighbour = [&](size_t index, int step) {
        if (step < 0 && index == 0)
            return closed ? points[last - 1] : points[0];
        if (step > 0 && index == last)
            return closed ? points[1] : points[last];
        return points[step < 0 ? index - 1 : index + 1];
    };
    Stroke curve{points[0]};
    for (size_t i = 0; i < last; ++i) {
        const StrokePoint before = neighbour(i, -1);
        const StrokePoint after = neighbour(i + 1, 1);
        for (int step = 1; step <= stepsPerCurvePiece; ++step) {
            const double t = static_cast<double>(step) / stepsPerCurvePiece;
            auto blend = [t](double a, double b, double c, double d) {
                return b +
                       t / 2 *
                           (c - a + t * (2 * a - 5 * b + 4 * c - d + t * (3 * (b - c) + d - a)));
            };
            curve.push_back({blend(before.x, points[i].x, points[i + 1].x, after.x),
                             blend(before.y, points[i].y, points[i + 1].y, after.y)});
        }
    }
    return curve;
}

const GlyphStrokes& glyphStrokes(char character) {
    static const Alphabet alphabet = parseAlphabet();
    const auto index = static_cast<unsigned char>(character);
    return alphabet[index < alphabet.size() ? index : size_t{' '}];
}

double textWidth(std::string_view text) {
    double width = 0;
    for (const char character : text)
        width += glyphStrokes(character).advance;
    return width;
}

} // namespace paperline::sources
