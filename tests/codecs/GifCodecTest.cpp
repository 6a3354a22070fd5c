#include "codecs/gif/GifCodec.h"

#include "codecs/gif/ColourPalette.h"
#include "codecs/gif/ErrorDiffusion.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gif_lib.h>
#include <gtest/gtest.h>
#include <random>
#include <set>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes encoded(const BitmapImageRep& page) {
    return encodeGif(page).value_or(Bytes());
}

struct Picture {
    int width = 0, height = 0, bitsPerPixel = 0;
    Bytes indices;
    Bytes rgb;
};

// By the library's reader.
Picture decoded(const Bytes& file) {
    struct Input {
        const Bytes& bytes;
        size_t at = 0;
    } input{file};
    const auto read = [](GifFileType* gif, GifByteType* place, int count) {
        auto& from = *static_cast<Input*>(gif->UserData);
        const size_t taken = std::min(static_cast<size_t>(count), from.bytes.size() - from.at);
        std::memcpy(place, from.bytes.data() + from.at, taken);
        from.at += taken;
        return static_cast<int>(taken);
    };
    Picture picture;
    GifFileType* gif = DGifOpen(&input, read, nullptr);
    if (gif == nullptr)
        return picture;
    if (DGifSlurp(gif) == GIF_OK && gif->ImageCount == 1) {
        picture.width = gif->SWidth;
        picture.height = gif->SHeight;
        picture.bitsPerPixel = gif->SColorMap->BitsPerPixel;
        const auto count = static_cast<size_t>(gif->SWidth) * static_cast<size_t>(gif->SHeight);
        picture.indices.assign(gif->SavedImages[0].RasterBits,
                               gif->SavedImages[0].RasterBits + count);
        for (const uint8_t index : picture.indices) {
            const GifColorType& colour = gif->SColorMap->Colors[index];
            picture.rgb.insert(picture.rgb.end(), {colour.Red, colour.Green, colour.Blue});
        }
    }
    DGifCloseFile(gif, nullptr);
    return picture;
}

std::shared_ptr<BitmapImageRep> noise(int32_t width, int32_t height, int bitsPerPixel) {
    auto page = BitmapImageRep::makePage(width, height, bitsPerPixel);
    std::mt19937 random(11);
    for (uint8_t& sample : page->bitmapData())
        sample = static_cast<uint8_t>(random());
    return page;
}

// Soft tones with a little noise, as photographs have them.
std::shared_ptr<BitmapImageRep> softTones(int32_t width, int32_t height) {
    auto page = BitmapImageRep::makePage(width, height, 24);
    std::mt19937 random(3);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            uint8_t* pixel = page->row(y).data() + 3 * x;
            const auto grain = static_cast<int32_t>(random() % 9);
            pixel[0] = static_cast<uint8_t>(20 + x * 200 / width + grain);
            pixel[1] = static_cast<uint8_t>(20 + y * 200 / height + grain);
            pixel[2] = static_cast<uint8_t>(120 + grain);
        }
    return page;
}

double meanOf(std::span<const uint8_t> samples, size_t first) {
    double sum = 0;
    size_t count = 0;
    for (size_t at = first; at < samples.size(); at += 3, ++count)
        sum += samples[at];
    return sum / static_cast<double>(count);
}

TEST(GifEncoding, ABlackAndWhitePageHasTwoColoursAndOneBit) {
    auto page = BitmapImageRep::makePage(2, 1, 1);
    page->row(0)[0] = 0x40; // black, white
    const Bytes expected{
        'G',  'I', 'F',  '8',  '7',  'a',  2, 0, 1, 0, 0x80, 0, 0, // screen: a table of two colours
        0,    0,   0,    0xFF, 0xFF, 0xFF,                         // black, white
        0x2C, 0,   0,    0,    0,    2,    0, 1, 0, 0,             // the picture's place and size
        2,    2,   0x44, 0x0A, 0, // codes of 3 bits: clear (4), 0, 1, end (5)
        0x3B};
    EXPECT_EQ(encoded(*page), expected);
}

TEST(GifEncoding, BitsBehindAnOddWidthAreNoPixels) {
    for (const int32_t width : {1, 7, 8, 9, 17}) {
        const auto page = noise(width, 5, 1);
        const Picture picture = decoded(encoded(*page));
        ASSERT_EQ(picture.width, width);
        EXPECT_EQ(picture.bitsPerPixel, 1);
        for (int32_t y = 0; y < 5; ++y)
            for (int32_t x = 0; x < width; ++x)
                EXPECT_EQ(picture.indices[static_cast<size_t>(y * width + x)],
                          page->row(y)[static_cast<size_t>(x / 8)] >> (7 - x % 8) & 1);
    }
}

TEST(GifEncoding, GreyPagesKeepEveryGrey) {
    const auto page = noise(300, 40, 8);
    const Picture picture = decoded(encoded(*page));
    EXPECT_EQ(picture.bitsPerPixel, 8);
    ASSERT_EQ(picture.rgb.size(), 3U * 300 * 40);
    for (size_t at = 0; at < page->bitmapData().size(); ++at)
        for (size_t sample = 0; sample < 3; ++sample)
            ASSERT_EQ(picture.rgb[3 * at + sample], page->bitmapData()[at]);
}

TEST(GifEncoding, FewColoursAreKept) {
    auto page = BitmapImageRep::makePage(64, 4, 24);
    for (size_t at = 0; at < 256; ++at) {
        page->bitmapData()[3 * at] = static_cast<uint8_t>(at);
        page->bitmapData()[3 * at + 1] = static_cast<uint8_t>(255 - at);
        page->bitmapData()[3 * at + 2] = static_cast<uint8_t>(at * 7);
    }
    const auto samples = page->bitmapData();
    EXPECT_EQ(decoded(encoded(*page)).rgb, Bytes(samples.begin(), samples.end()));
}

TEST(GifEncoding, ManyColoursKeepTheirMeanInEveryPart) {
    const auto page = softTones(256, 256);
    const Picture picture = decoded(encoded(*page));
    ASSERT_EQ(picture.rgb.size(), page->bitmapData().size());
    EXPECT_EQ(picture.bitsPerPixel, 8);
    constexpr size_t rowBytes = 256 * 3;
    // The first and last rows hold tones outside of what the palette's colours can mix.
    for (size_t part = 1; part < 7; ++part)
        for (size_t sample = 0; sample < 3; ++sample) {
            const size_t from = part * 32 * rowBytes, count = 32 * rowBytes;
            EXPECT_NEAR(meanOf(std::span(picture.rgb).subspan(from, count), sample),
                        meanOf(page->bitmapData().subspan(from, count), sample),
                        0.5);
        }
}

TEST(GifEncoding, TheSamePageGivesTheSameFile) {
    const auto page = softTones(200, 150);
    EXPECT_EQ(encoded(*page), encoded(*page));
}

TEST(GifEncoding, ExtremeSizesAndPlainPages) {
    for (const int bits : {1, 8, 24}) {
        for (const auto& [width, height] : {std::pair{1, 1}, {1, 700}, {700, 1}, {2, 65000}}) {
            const Picture picture = decoded(encoded(*noise(width, height, bits)));
            EXPECT_EQ(picture.width, width) << bits;
            EXPECT_EQ(picture.height, height) << bits;
        }
        for (const uint8_t level : {uint8_t{0}, uint8_t{255}}) {
            auto page = BitmapImageRep::makePage(33, 20, bits);
            std::ranges::fill(page->bitmapData(), level);
            const Picture picture = decoded(encoded(*page));
            EXPECT_EQ(picture.rgb, Bytes(3U * 33 * 20, level)) << bits;
        }
    }
}

TEST(GifEncoding, RefusesWhatTheFormatCannotHold) {
    EXPECT_TRUE(encodeGif(*BitmapImageRep::makePage(65535, 1, 1)));
    EXPECT_FALSE(encodeGif(*BitmapImageRep::makePage(65536, 1, 1)));
    EXPECT_FALSE(encodeGif(*BitmapImageRep::makePage(1, 65536, 8)));
    EXPECT_FALSE(encodeGif(*BitmapImageRep::make({2, 2, 8, 4, 32, 8})));
}

TEST(GifEncoding, PaddedRowsAreRead) {
    auto page = BitmapImageRep::make({1, 2, 8, 1, 8, 4});
    page->row(0)[0] = 9;
    page->row(1)[0] = 200;
    EXPECT_EQ(decoded(encoded(*page)).rgb, (Bytes{9, 9, 9, 200, 200, 200}));
}

TEST(ColourPalette, ListsColoursInOrderUpTo256) {
    auto page = BitmapImageRep::makePage(257, 1, 24);
    EXPECT_EQ(coloursOfPage(*page), (Palette{{0, 0, 0}}));
    page->row(0)[5] = 7;
    EXPECT_EQ(coloursOfPage(*page), (Palette{{0, 0, 0}, {0, 0, 7}}));
    for (size_t at = 0; at < 257; ++at) {
        page->row(0)[3 * at] = static_cast<uint8_t>(at);
        page->row(0)[3 * at + 1] = static_cast<uint8_t>(at / 256);
    }
    EXPECT_TRUE(coloursOfPage(*page).empty());
}

TEST(ColourPalette, GivesSeparateColoursTheirMeans) {
    auto page = BitmapImageRep::makePage(8, 8, 24);
    for (int32_t y = 0; y < 8; ++y)
        for (size_t x = 0; x < 8; ++x) {
            uint8_t* pixel = page->row(y).data() + 3 * x;
            pixel[0] = y < 4 ? 250 : 10;
            pixel[1] = 100;
            pixel[2] = 30;
        }
    Palette palette = choosePalette(*page);
    std::ranges::sort(palette, {}, &PaletteColour::red);
    EXPECT_EQ(palette, (Palette{{10, 100, 30}, {250, 100, 30}}));
}

Bytes greys(std::initializer_list<uint8_t> levels) {
    Bytes row;
    for (const uint8_t level : levels)
        row.insert(row.end(), 3, level);
    return row;
}

// Levels from 128 on become white; each pixel here lies as near to that as a changed weight shows.
TEST(ErrorDiffusion, HandsOnWhatAPixelMisses) {
    ErrorDiffusion diffusion({{0, 0, 0}, {255, 255, 255}}, 2);
    Bytes indices(2);
    // 100 misses 100; 85 + 44 (7/16) = 129 misses -126.
    diffusion.mapRow(greys({100, 85}), indices);
    EXPECT_EQ(indices, (Bytes{0, 1}));
    // 120 + (5 x 100 - 3 x 126) / 16 = 128 misses -127;
    // 217 + (-7 x 127 - 5 x 126 + 100) / 16 = 128.
    diffusion.mapRow(greys({120, 217}), indices);
    EXPECT_EQ(indices, (Bytes{1, 1}));
}

} // namespace
} // namespace paperline
