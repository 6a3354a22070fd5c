// Pages that try an encoder's edges, for every depth, and what a file of them must give back.
#pragma once

#include "codecs/pictures/PictureReader.h"
#include "codecs/pixels/BitmapImageRep.h"
#include "codecs/pixels/DecodedImage.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace paperline::testing_support {

using PagePointer = std::shared_ptr<BitmapImageRep>;
// The sample bytes of a page, in order.
using Fill = std::function<uint8_t(size_t)>;

inline PagePointer filledPage(int32_t width, int32_t height, int bits, const Fill& fill) {
    PagePointer page = BitmapImageRep::makePage(width, height, bits);
    size_t at = 0;
    for (uint8_t& byte : page->bitmapData())
        byte = fill(at++);
    return page;
}

inline PagePointer noisePage(int32_t width, int32_t height, int bits) {
    std::mt19937 random(static_cast<uint32_t>(width * 31 + height));
    return filledPage(
        width, height, bits, [&random](size_t) { return static_cast<uint8_t>(random()); });
}

// Like `page`, but rows further apart, with garbage between them.
inline PagePointer withWideRows(const BitmapImageRep& page, int64_t spareBytes) {
    PagePointer wide = BitmapImageRep::make({.pixelsWide = page.pixelsWide(),
                                             .pixelsHigh = page.pixelsHigh(),
                                             .bitsPerSample = page.bitsPerSample(),
                                             .samplesPerPixel = page.samplesPerPixel(),
                                             .bitsPerPixel = page.bitsPerPixel(),
                                             .bytesPerRow = page.bytesPerRow() + spareBytes});
    for (uint8_t& byte : wide->bitmapData())
        byte = 0xA5;
    for (int32_t y = 0; y < page.pixelsHigh(); ++y)
        std::copy(page.row(y).begin(), page.row(y).end(), wide->row(y).begin());
    return wide;
}

// Bits behind a row's last pixel mean nothing.
inline void expectSamePixels(const BitmapImageRep& page, const BitmapImageRep& other) {
    ASSERT_EQ(other.pixelsWide(), page.pixelsWide());
    ASSERT_EQ(other.pixelsHigh(), page.pixelsHigh());
    ASSERT_EQ(other.bitsPerPixel(), page.bitsPerPixel());
    const size_t bits =
        static_cast<size_t>(page.pixelsWide()) * static_cast<size_t>(page.bitsPerPixel());
    for (int32_t y = 0; y < page.pixelsHigh(); ++y) {
        const auto mine = page.row(y);
        const auto theirs = other.row(y);
        ASSERT_TRUE(std::equal(
            mine.begin(), mine.begin() + static_cast<ptrdiff_t>(bits / 8), theirs.begin()))
            << "row " << y;
        if (bits % 8 != 0) {
            ASSERT_EQ((mine[bits / 8] ^ theirs[bits / 8]) >> (8 - bits % 8), 0) << "row " << y;
        }
    }
}

inline std::vector<PagePointer> edgePages(int bits) {
    const Fill white = [](size_t) { return uint8_t{255}; };
    const Fill black = [](size_t) { return uint8_t{0}; };
    const Fill ramp = [](size_t at) { return static_cast<uint8_t>(at / 3); };
    std::vector<PagePointer> pages{filledPage(1, 1, bits, white),
                                   filledPage(1, 1, bits, black),
                                   filledPage(1, 300, bits, ramp),
                                   filledPage(300, 1, bits, ramp),
                                   filledPage(1, 65000, bits, ramp),
                                   filledPage(65000, 3, bits, ramp),
                                   filledPage(700, 900, bits, white),
                                   filledPage(700, 900, bits, black),
                                   noisePage(700, 900, bits),
                                   withWideRows(*noisePage(37, 41, bits), 5)};
    for (int32_t width = 1; width <= 17; ++width)
        pages.push_back(noisePage(width, 19, bits));
    return pages;
}

// For joiners, as the program reads pages of other formats.
inline std::optional<DecodedImage> readWhole(const std::string& path) {
    return readPicture(path, 0, 100'000'000);
}

} // namespace paperline::testing_support
