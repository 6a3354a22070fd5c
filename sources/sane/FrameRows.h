// Converts SANE's lines to rows of a page (PageFormat in ScanTypes.h).
#pragma once

#include "sources/sane/SaneScanner.h"

#include <cstdint>
#include <span>

namespace paperline::sources {

// The page's bits per pixel; 0 for frames that are not supported.
int pageBits(const SaneParameters& parameters);

// Bytes of a line without padding. Colour of one bit has a red, a green and a blue byte for each
// eight pixels.
int64_t packedLineBytes(const SaneParameters& parameters);

// The frame's lines are the page's rows unchanged.
bool linesAreRows(const SaneParameters& parameters);

// Frames of a single colour set their sample of each pixel only. `line` holds packedLineBytes,
// `row` a row of the page.
void lineToRow(const SaneParameters& parameters,
               std::span<const uint8_t> line,
               std::span<uint8_t> row);

} // namespace paperline::sources
