// A picture with soft tones, like a photograph: sky, a low sun, hills and a field.
#pragma once

#include "sources/software/BandCanvas.h"

#include <cstdint>
#include <vector>

namespace paperline::sources {

class Landscape {
public:
    explicit Landscape(PixelRect area);
    void paint(BandCanvas& canvas, bool blackAndWhite) const;

private:
    void drawSky();
    void drawHills();
    Ink& ink(int32_t x, int32_t y);

    PixelRect area_;
    int32_t width_, height_;
    std::vector<Ink> inks_;
};

} // namespace paperline::sources
