// SANE's lines turned into the rows of a page: 1 bit with 0 as black, 8 bits grey, or 24 bits RGB.
#pragma once

#include "sources/sane/SaneScanner.h"

#include <cstdint>
#include <span>

namespace paperline::sources {

// Depth of the page that such frames make; 0 when it is none that is known here.
int pageBits(const SaneParameters& parameters);

// Bytes of a line without padding; a colour frame of one bit has a group of red, green and blue
// bytes for every eight pixels.
int64_t packedLineBytes(const SaneParameters& parameters);

// The frame's lines are the page's rows as they stand.
bool linesAreRows(const SaneParameters& parameters);

// Turns a line into a row of the page. Frames of a single colour set their part of each pixel and
// leave the others alone. `line` holds packedLineBytes, `row` the page's bytes for a row.
void lineToRow(const SaneParameters& parameters,
               std::span<const uint8_t> line,
               std::span<uint8_t> row);

} // namespace paperline::sources
