#include "sources/software/StrokeFont.h"

#include "sources/framework/LocaleFreeText.h"
#include "sources/software/StrokeFontGlyphs.h"

#include <algorithm>
#include <array>

namespace paperline::sources {

namespace {

constexpr double letterSpacing = 3.2;
constexpr double spaceAdvance = 6.5;
constexpr int stepsPerCurvePiece = 6;

std::string_view takeWord(std::string_view& text) {
    const size_t start = std::min(text.find_first_not_of(" \n"), text.size());
    const size_t end = std::min(text.find_first_of(" \n", start), text.size());
    const std::string_view word = text.substr(start, end - start);
    text.remove_prefix(end);
    return word;
}

Stroke parseStroke(std::string_view text) {
    const bool curved = text.find('~') != std::string_view::npos;
    Stroke points;
    for (auto word = takeWord(text); !word.empty(); word = takeWord(text)) {
        if (word.starts_with('~'))
            word.remove_prefix(1);
        const double x = leadingNumber(takePart(word, ','));
        points.push_back({x, leadingNumber(word)});
    }
    return curved ? smoothStroke(points) : points;
}

std::string_view takeDrawing(std::string_view& text) {
    size_t end = text.find('\n');
    while (end + 1 < text.size() && text[end + 1] == ' ')
        end = text.find('\n', end + 1);
    const std::string_view drawing = text.substr(0, end);
    text.remove_prefix(end + 1);
    return drawing;
}

using Alphabet = std::array<GlyphStrokes, 128>;

Alphabet parseAlphabet() {
    Alphabet alphabet;
    for (GlyphStrokes& glyph : alphabet)
        glyph.advance = spaceAdvance;
    for (std::string_view rest = glyphDrawings.substr(1); !rest.empty();) {
        std::string_view drawing = takeDrawing(rest);
        GlyphStrokes& glyph = alphabet[static_cast<size_t>(takeWord(drawing).front())];
        glyph.advance = leadingNumber(takeWord(drawing)) + letterSpacing;
        while (!drawing.empty())
            glyph.strokes.push_back(parseStroke(takePart(drawing, '|')));
    }
    return alphabet;
}

} // namespace

Stroke smoothStroke(const Stroke& points) {
    if (points.size() < 3)
        return points;
    const size_t last = points.size() - 1;
    const bool closed = points[0].x == points[last].x && points[0].y == points[last].y;
    // Catmull-Rom splines: the neighbours give each piece's direction at its ends.
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
