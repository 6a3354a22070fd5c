// The content of a page, in drawing order, painted band by band.
#pragma once

#include "sources/framework/ScanTypes.h"
#include "sources/software/BandCanvas.h"
#include "sources/software/Landscape.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <tuple>
#include <variant>
#include <vector>

namespace paperline::sources {

struct Font {
    double sizePoints = 10;
    bool bold = false;
};

enum class Align { left, centre, right };

// Lengths are millimetres from the page's top left corner, y downwards.
class Drawing {
public:
    explicit Drawing(double dpi) : pixelsPerMillimetre_(dpi / millimetresPerInch) {}

    void rectangle(double left, double top, double width, double height, Ink ink);
    // x is the text's left end, its middle or its right end.
    void text(double x,
              double baseline,
              std::string_view text,
              Font font,
              Ink ink,
              Align align = Align::left);
    static double textWidth(std::string_view text, Font font);
    // Drawn with a round pen.
    void line(const Stroke& points, double penWidth, Ink ink);
    void photograph(double left, double top, double width, double height);

    size_t count() const { return items_.size(); }
    void truncate(size_t count) { items_.resize(count); } // keeps the first `count` items

    // Photographs are dithered when the page will be black and white.
    void paint(BandCanvas& canvas, bool blackAndWhite) const;

private:
    struct Box {
        PixelRect area;
        Ink ink;
    };
    struct Shape {
        std::shared_ptr<const CoverageMask> mask;
        int32_t x, y;
        Ink ink;
    };
    struct Photograph {
        std::shared_ptr<const Landscape> landscape;
    };
    struct Item {
        int32_t top, bottom; // rows that it may touch
        std::variant<Box, Shape, Photograph> what;
    };
    using GlyphKey = std::tuple<char, double, bool>;

    int32_t pixels(double millimetres) const;
    std::shared_ptr<const CoverageMask> glyphMask(char character, Font font);
    void addShape(std::shared_ptr<const CoverageMask> mask, int32_t x, int32_t y, Ink ink);

    double pixelsPerMillimetre_;
    std::vector<Item> items_;
    std::map<GlyphKey, std::shared_ptr<const CoverageMask>> glyphs_;
};

} // namespace paperline::sources
