// Rows of 24-bit colour in the pixel format that Qt draws fastest.
#pragma once

#include <QImage>

#include <cstdint>
#include <functional>
#include <span>

namespace paperline {

enum class ColourOrder { redFirst, blueFirst };

// A picture of 32-bit colour with undefined pixels. Null without memory.
QImage newColourImage(int widthPixels, int heightPixels);

// Sets the pixels of a row from three bytes each.
void putColourRow(std::span<const uint8_t> bytes, ColourOrder order, std::span<QRgb> pixels);

inline constexpr int rowsOfBand = 64;

// Calls work(first, end) for bands of rows that together are all below `heightPixels`, by several
// threads at once. `work` must not throw.
void forBandsOfRows(int heightPixels, const std::function<void(int first, int end)>& work);

} // namespace paperline
