#include "codecs/pictures/PictureReader.h"

#include "PagePictures.h"
#include "PictureFiles.h"
#include "codecs/jpeg/JpegCodec.h"
#include "codecs/pixels/DecodedImage.h"
#include "codecs/tiff/TiffWriter.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/FileTesting.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace paperline {
namespace {

using namespace testing_support;
using std::string_view;

constexpr uint64_t plenty = 1'000'000;
constexpr uint64_t manyPixels = uint64_t{1} << 24U;

class Picture : public testing::Test {
protected:
    // The file's name says nothing: kinds are told apart by content.
    std::optional<DecodedImage> read(const Bytes& file, int page = 0, uint64_t most = plenty) {
        putFresh(file);
        return readPicture(path(), page, most);
    }
    std::optional<DecodedImage> read(string_view file) { return read(bytesOf(file)); }
    int pages(const Bytes& file) {
        putFresh(file);
        return picturePageCount(path());
    }
    std::string path() const { return folder_ / "picture.dat"; }
    // Removed first: some file systems wait for the disk when a file is cut and filled again.
    void putFresh(const Bytes& file) {
        EXPECT_TRUE(removePath(path()));
        EXPECT_TRUE(writeFile(path(), file));
    }

    // In memory where there is such a folder: thousands of small files pass through it.
    TestFolder folder_{isWritable("/dev/shm") ? "/dev/shm" : ""};
};

Bytes pixelsOf(const std::optional<DecodedImage>& picture) {
    if (!picture)
        return {};
    const auto data = picture->image->bitmapData();
    return {data.begin(), data.end()};
}

int bitsOf(const std::optional<DecodedImage>& picture) {
    return picture ? picture->image->bitsPerPixel() : 0;
}

TEST_F(Picture, PnmBitsAreTurnedSoThatZeroIsBlack) {
    const auto figures = read("P1\n# comment\n3 2\n1 0 1\n010\n");
    EXPECT_EQ(bitsOf(figures), 1);
    EXPECT_EQ(figures->image->pixelsWide(), 3);
    EXPECT_EQ(figures->image->pixelsHigh(), 2);
    EXPECT_EQ(pixelsOf(figures)[0] & 0xE0, 0x40);
    EXPECT_EQ(pixelsOf(figures)[1] & 0xE0, 0xA0);
    const auto packed = read("P4 3 2\n\xA0\x40");
    EXPECT_EQ(bitsOf(packed), 1);
    EXPECT_EQ(pixelsOf(packed)[0] & 0xE0, 0x40);
    EXPECT_EQ(pixelsOf(packed)[1] & 0xE0, 0xA0);
}

TEST_F(Picture, PnmGreyAndColour) {
    EXPECT_EQ(pixelsOf(read("P2 3 1 255\n0 128 255")), (Bytes{0, 128, 255}));
    EXPECT_EQ(pixelsOf(read("P5\n3 1\n255\n\x01\x80\xFF")), (Bytes{1, 128, 255}));
    EXPECT_EQ(pixelsOf(read("P3 1 1 255 1 2 3\n")), (Bytes{1, 2, 3}));
    const auto colour = read("P6 1 2 255 abcdef");
    EXPECT_EQ(bitsOf(colour), 24);
    EXPECT_EQ(pixelsOf(colour), bytesOf("abcdef"));
    EXPECT_EQ(colour->horizontalDpi, 0);
}

TEST_F(Picture, PnmSamplesAreScaledToEightBits) {
    EXPECT_EQ(pixelsOf(read("P2 4 1 3 0 1 2 3")), (Bytes{0, 85, 170, 255}));
    EXPECT_EQ(pixelsOf(read(string_view("P5 3 1 65535\n\x00\x00\x80\x00\xFF\xFF", 20))),
              (Bytes{0, 128, 255}));
    EXPECT_EQ(pixelsOf(read(string_view("P5 2 1 1\n\x00\x01", 11))), (Bytes{0, 255}));
}

TEST_F(Picture, PnmIsReadStrictly) {
    for (const string_view file : {"P5",
                                   "P5 ",
                                   "P5 2",
                                   "P5 2 1",
                                   "P5 2 1 255",
                                   "P5 2 1 255\n",
                                   "P5 2 1 255\na",
                                   "P5 0 1 255\nx",
                                   "P5 -1 1 255\nx",
                                   "P5 2 1 0\nxx",
                                   "P5 2 1 65536\nxxxx",
                                   "P5 2 1 254\n\xFF\xFF",
                                   "P2 2 1 255\n1 256",
                                   "P2 2 1 255\n1",
                                   "P2 2 1 255\n1 x",
                                   "P1 2 1\n2 0",
                                   "P1 2 1\n0",
                                   "P4 9 1\n\x00",
                                   "P7 2 1 255\nxx",
                                   "P5x2 1 255\nxx",
                                   "P5 99999999999 1 255\nx",
                                   "P5 2 1 255x ab"})
        EXPECT_FALSE(read(file).has_value()) << file;
    EXPECT_TRUE(read("P5 2 1 255\nabc").has_value()); // another picture may follow
}

TEST_F(Picture, PngGreyOfEveryDepth) {
    EXPECT_EQ(pixelsOf(read(pngFile({10, 1, 1, 0, {0, 0xA5, 0x40}, {}}))), (Bytes{0xA5, 0x40}));
    EXPECT_EQ(bitsOf(read(pngFile({10, 1, 1, 0, {0, 0xA5, 0x40}, {}}))), 1);
    EXPECT_EQ(pixelsOf(read(pngFile({4, 1, 2, 0, {0, 0x1B}, {}}))), (Bytes{0, 85, 170, 255}));
    EXPECT_EQ(pixelsOf(read(pngFile({2, 1, 4, 0, {0, 0x0F}, {}}))), (Bytes{0, 255}));
    EXPECT_EQ(pixelsOf(read(pngFile({2, 1, 8, 0, {0, 7, 200}, {}}))), (Bytes{7, 200}));
    EXPECT_EQ(pixelsOf(read(pngFile({2, 1, 16, 0, {0, 0x80, 0x80, 0xFF, 0xFF}, {}}))),
              (Bytes{0x80, 0xFF}));
}

TEST_F(Picture, PngColours) {
    const auto rgb = read(pngFile({1, 2, 8, 2, {0, 1, 2, 3, 0, 4, 5, 6}, {}}));
    EXPECT_EQ(bitsOf(rgb), 24);
    EXPECT_EQ(pixelsOf(rgb), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(pixelsOf(read(pngFile({1, 1, 16, 2, {0, 1, 1, 2, 2, 3, 3}, {}}))), (Bytes{1, 2, 3}));
    const Bytes palette = pngChunk("PLTE", {10, 20, 30, 40, 50, 60});
    EXPECT_EQ(pixelsOf(read(pngFile({2, 1, 1, 3, {0, 0x40}, palette}))),
              (Bytes{10, 20, 30, 40, 50, 60}));
}

TEST_F(Picture, PngTransparencyIsSeenOnWhite) {
    EXPECT_EQ(pixelsOf(read(pngFile({3, 1, 8, 4, {0, 0, 0, 0, 255, 100, 128}, {}}))),
              (Bytes{255, 0, 177}));
    EXPECT_EQ(pixelsOf(read(pngFile({2, 1, 8, 6, {0, 9, 8, 7, 255, 9, 8, 7, 0}, {}}))),
              (Bytes{9, 8, 7, 255, 255, 255}));
    Bytes palette = pngChunk("PLTE", {10, 20, 30, 40, 50, 60});
    append(palette, pngChunk("tRNS", {0}));
    EXPECT_EQ(pixelsOf(read(pngFile({2, 1, 1, 3, {0, 0x40}, palette}))),
              (Bytes{255, 255, 255, 40, 50, 60}));
    // One grey value is transparent: a bilevel page then is grey.
    const auto bits = read(pngFile({2, 1, 1, 0, {0, 0x40}, pngChunk("tRNS", {0, 0})}));
    EXPECT_EQ(bitsOf(bits), 8);
    EXPECT_EQ(pixelsOf(bits), (Bytes{255, 255}));
}

TEST_F(Picture, PngResolution) {
    Bytes density = bigEndian(11811);
    append(density, bigEndian(7874));
    density.push_back(1);
    const auto picture = read(pngFile({1, 1, 8, 0, {0, 0}, pngChunk("pHYs", density)}));
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->horizontalDpi, 300);
    EXPECT_EQ(picture->verticalDpi, 200);
    EXPECT_DOUBLE_EQ(picture->image->size().width, 72 / 300.0);
    density.back() = 0; // only a proportion
    EXPECT_EQ(read(pngFile({1, 1, 8, 0, {0, 0}, pngChunk("pHYs", density)}))->horizontalDpi, 0);
}

TEST_F(Picture, PngDamage) {
    const Bytes good = pngFile({2, 2, 8, 2, {0, 1, 2, 3, 4, 5, 6, 0, 7, 8, 9, 1, 2, 3}, {}});
    ASSERT_TRUE(read(good).has_value());
    for (size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(read(Bytes(good.begin(), good.begin() + static_cast<ptrdiff_t>(length))));
    Bytes bad = good;
    bad[20] ^= 1U; // the width, guarded by the header's checksum
    EXPECT_FALSE(read(bad).has_value());
    bad = good;
    bad[bad.size() - 20] ^= 1U; // a checksum of the data
    EXPECT_FALSE(read(bad).has_value());
}

std::vector<TiffTag>
tiffTags(uint32_t width, uint32_t height, uint32_t bits, uint32_t photometric) {
    return {{256, 4, {width}},
            {257, 4, {height}},
            {258, 3, {bits}},
            {259, 3, {1}},
            {262, 3, {photometric}},
            {277, 3, {1}},
            {278, 4, {height}}};
}

Bytes tiffFile(const std::vector<TiffTag>& tags, const Bytes& strip) {
    TiffFile file;
    file.add({tags, strip});
    return file.bytes();
}

TEST_F(Picture, TiffBitsOfBothPolarities) {
    const auto blackIsZero = read(tiffFile(tiffTags(10, 2, 1, 1), {0xA5, 0x40, 0x0F, 0x80}));
    EXPECT_EQ(bitsOf(blackIsZero), 1);
    EXPECT_EQ(pixelsOf(blackIsZero), (Bytes{0xA5, 0x40, 0x0F, 0x80}));
    const auto whiteIsZero = read(tiffFile(tiffTags(8, 2, 1, 0), {0xA5, 0x0F}));
    EXPECT_EQ(pixelsOf(whiteIsZero), (Bytes{0x5A, 0xF0}));
}

TEST_F(Picture, TiffGrey) {
    EXPECT_EQ(pixelsOf(read(tiffFile(tiffTags(3, 1, 8, 1), {1, 2, 250}))), (Bytes{1, 2, 250}));
    EXPECT_EQ(pixelsOf(read(tiffFile(tiffTags(3, 1, 8, 0), {1, 2, 250}))), (Bytes{254, 253, 5}));
    const auto four = read(tiffFile(tiffTags(2, 1, 4, 1), {0x0F}));
    EXPECT_EQ(bitsOf(four), 8);
    EXPECT_EQ(pixelsOf(four), (Bytes{0, 255}));
    const auto sixteen = read(tiffFile(tiffTags(2, 1, 16, 1), {0x34, 0x12, 0xFF, 0xFF}));
    EXPECT_EQ(bitsOf(sixteen), 8);
    EXPECT_EQ(pixelsOf(sixteen), (Bytes{0x12, 0xFF}));
}

std::vector<TiffTag> colourTags(uint32_t samples, uint32_t bits, uint32_t planes) {
    std::vector<TiffTag> tags{{256, 4, {1}},
                              {257, 4, {2}},
                              {258, 3, std::vector<uint32_t>(samples, bits)},
                              {259, 3, {1}},
                              {262, 3, {2}},
                              {277, 3, {samples}},
                              {278, 4, {2}},
                              {284, 3, {planes}}};
    return tags;
}

TEST_F(Picture, TiffColours) {
    const auto eight = read(tiffFile(colourTags(3, 8, 1), {1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(bitsOf(eight), 24);
    EXPECT_EQ(pixelsOf(eight), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(pixelsOf(read(
                  tiffFile(colourTags(3, 16, 1), {1, 1, 2, 2, 3, 3, 255, 255, 0, 0, 128, 128}))),
              (Bytes{1, 2, 3, 255, 0, 128}));
}

TEST_F(Picture, TiffAlphaIsSeenOnWhite) {
    std::vector<TiffTag> tags = colourTags(4, 8, 1);
    tags.push_back({338, 3, {2}}); // alpha that the colours are not multiplied with
    EXPECT_EQ(pixelsOf(read(tiffFile(tags, {9, 8, 7, 255, 9, 8, 7, 0}))),
              (Bytes{9, 8, 7, 255, 255, 255}));
    tags.back().values = {1}; // that they are
    EXPECT_EQ(pixelsOf(read(tiffFile(tags, {50, 0, 100, 128, 0, 0, 0, 0}))),
              (Bytes{177, 127, 227, 255, 255, 255}));
}

TEST_F(Picture, TiffPalette) {
    std::vector<TiffTag> tags = tiffTags(2, 1, 1, 3);
    tags.push_back({320, 3, {0x0A0A, 0x2828, 0x1414, 0x3232, 0x1E1E, 0x3C3C}});
    const auto picture = read(tiffFile(tags, {0x40}));
    EXPECT_EQ(bitsOf(picture), 24);
    EXPECT_EQ(pixelsOf(picture), (Bytes{10, 20, 30, 40, 50, 60}));
}

TEST_F(Picture, TiffResolution) {
    std::vector<TiffTag> tags = tiffTags(1, 1, 8, 1);
    tags.push_back({282, 5, {600, 2}});
    tags.push_back({283, 5, {200, 1}});
    const auto inches = read(tiffFile(tags, {0}));
    ASSERT_TRUE(inches.has_value());
    EXPECT_EQ(inches->horizontalDpi, 300);
    EXPECT_EQ(inches->verticalDpi, 200);
    tags.push_back({296, 3, {3}});
    EXPECT_NEAR(read(tiffFile(tags, {0}))->horizontalDpi, 762, 1e-6);
    tags.back().values = {1};
    EXPECT_EQ(read(tiffFile(tags, {0}))->horizontalDpi, 0);
}

TEST_F(Picture, TiffKeepsTheStoredOrderOfRows) {
    for (const uint32_t orientation : {1U, 3U, 4U, 6U}) {
        std::vector<TiffTag> tags = tiffTags(2, 2, 4, 1); // takes the converting way
        tags.insert(tags.begin() + 5, {274, 3, {orientation}});
        EXPECT_EQ(pixelsOf(read(tiffFile(tags, {0x0F, 0x5A}))), (Bytes{0, 255, 85, 170}))
            << orientation;
    }
}

// Large enough for strips to be decoded side by side.
TEST_F(Picture, TiffStripsOfALargePage) {
    for (const int bits : {1, 8, 24}) {
        const PagePointer page = noisePage(bits == 1 ? 7001 : 1201, bits == 1 ? 1300 : 999, bits);
        const Bytes file = encodeTiff(*page, {}).value_or(Bytes());
        const auto picture = read(file, 0, manyPixels);
        ASSERT_TRUE(picture.has_value()) << bits;
        expectSamePixels(*page, *picture->image);
        EXPECT_FALSE(read(Bytes(file.begin(), file.begin() + 400'000), 0, manyPixels).has_value());
    }
}

TEST_F(Picture, ADamagedStripOfALargePageGivesNothing) {
    Bytes file = encodeTiff(*noisePage(1201, 999, 24), {}).value_or(Bytes());
    // Codes that are not yet in the table of LZW: all ones.
    std::fill_n(file.begin() + static_cast<ptrdiff_t>(file.size() / 2), 4000, uint8_t{0xFF});
    EXPECT_FALSE(read(file, 0, manyPixels).has_value());
}

TEST_F(Picture, TiffPages) {
    TiffFile file;
    for (uint8_t page = 0; page < 3; ++page)
        file.add({tiffTags(1, 1, 8, 1), {static_cast<uint8_t>(page * 10)}});
    EXPECT_EQ(pages(file.bytes()), 3);
    for (int page = 0; page < 3; ++page)
        EXPECT_EQ(pixelsOf(read(file.bytes(), page)), (Bytes{static_cast<uint8_t>(page * 10)}));
    EXPECT_FALSE(read(file.bytes(), 3).has_value());
    EXPECT_FALSE(read(file.bytes(), -1).has_value());
    EXPECT_FALSE(read(file.bytes(), 70000).has_value());
}

TEST_F(Picture, TiffDamage) {
    EXPECT_FALSE(read(tiffFile(tiffTags(400, 40, 8, 1), {1, 2, 3})).has_value()); // ends early
    EXPECT_FALSE(read(tiffFile(tiffTags(0, 4, 8, 1), {1, 2, 3})).has_value());
    EXPECT_FALSE(read("II*").has_value());
    EXPECT_FALSE(read(string_view("II*\0\0\0\0\0", 8)).has_value());
    EXPECT_FALSE(read(string_view("MM\0*\0\0\0\x63", 8)).has_value());
}

TEST_F(Picture, JpegThroughTheSameDoor) {
    auto page = BitmapImageRep::makePage(20, 10, 8);
    std::ranges::fill(page->bitmapData(), uint8_t{99});
    const Bytes file = encodeJpeg(*page, {90, 300, 200}).value_or(Bytes());
    const auto picture = read(file);
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(bitsOf(picture), 8);
    EXPECT_EQ(picture->horizontalDpi, 300);
    EXPECT_DOUBLE_EQ(picture->image->size().width, 20 * 72 / 300.0);
    EXPECT_DOUBLE_EQ(picture->image->size().height, 10 * 72 / 200.0);
    EXPECT_NEAR(pixelsOf(picture)[0], 99, 1);
    EXPECT_EQ(pages(file), 1);
    EXPECT_FALSE(read(file, 1).has_value());
}

TEST_F(Picture, HasItsPixelsCountedFirst) {
    auto page = BitmapImageRep::makePage(20, 10, 8);
    for (const Bytes& file : {bytesOf("P5 20 10 255\n" + std::string(200, 'x')),
                              pngFile({20, 10, 1, 0, Bytes(40, 0), {}}),
                              tiffFile(tiffTags(20, 10, 8, 1), Bytes(200)),
                              encodeJpeg(*page, {}).value_or(Bytes())}) {
        EXPECT_TRUE(read(file, 0, 200).has_value());
        EXPECT_FALSE(read(file, 0, 199).has_value());
        EXPECT_FALSE(read(file, 0, 0).has_value());
    }
}

TEST_F(Picture, TakesNoMemoryForAPromise) {
    // Headers of 2,000,000 x 2,000,000 pixels in files of a few bytes, with the limit wide open.
    constexpr uint64_t any = UINT64_MAX;
    EXPECT_FALSE(read(bytesOf("P6 2000000 2000000 255\nabc"), 0, any).has_value());
    EXPECT_FALSE(read(bytesOf("P3 2000000 2000000 255\n1 2 3"), 0, any).has_value());
    EXPECT_FALSE(read(bytesOf("P1 2000000 2000000\n1 0 1"), 0, any).has_value());
    EXPECT_FALSE(read(bytesOf("P4 2000000 2000000\nabc"), 0, any).has_value());
    EXPECT_FALSE(read(pngFile({2000000, 2000000, 8, 2, {0}, {}}), 0, plenty).has_value());
    EXPECT_FALSE(read(tiffFile(tiffTags(2000000, 2000000, 8, 1), {0}), 0, plenty).has_value());
}

TEST_F(Picture, OtherFilesAreNone) {
    for (const string_view file : {"", "P", "P9 1 1", "hello world", "GIF89a", "\xFF\xD8", "BM"}) {
        EXPECT_FALSE(read(file).has_value()) << file;
        EXPECT_EQ(pages(bytesOf(file)), 0) << file;
    }
    EXPECT_FALSE(readPicture(folder_ / "missing", 0, plenty).has_value());
    EXPECT_FALSE(readPicture(folder_.path(), 0, plenty).has_value());
    EXPECT_EQ(picturePageCount(folder_.path()), 0);
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(picturePageCount(folder_ / "pipe"), 0);
}

TEST_F(Picture, PageCounts) {
    EXPECT_EQ(pages(bytesOf("P5 2 1 255\nab")), 1);
    EXPECT_EQ(pages(pngFile({1, 1, 8, 0, {0, 0}, {}})), 1);
    EXPECT_EQ(pages(bytesOf("P5 2 x")), 0);
}

TEST_F(Picture, DamageEndsNothing) {
    std::vector<TiffTag> lzw = tiffTags(8, 8, 8, 1);
    lzw[3].values = {5};
    auto page = BitmapImageRep::makePage(16, 16, 24);
    std::mt19937 random(3);
    for (const Bytes& seed : {bytesOf("P5 8 8 255\n" + std::string(64, 'x')),
                              bytesOf("P3 2 2 99 1 2 3 4 5 6 7 8 9 1 2 3"),
                              pngFile({8, 8, 8, 0, Bytes(72, 0), {}}),
                              tiffFile(tiffTags(8, 8, 8, 1), Bytes(64)),
                              tiffFile(lzw, {0x80, 0x1F, 0xE0, 0x50, 0x38, 0x24}),
                              tiffFile(colourTags(3, 16, 1), Bytes(12)),
                              encodeJpeg(*page, {}).value_or(Bytes())})
        for (int round = 0; round < 300; ++round) {
            Bytes file = seed;
            for (int change = 0; change < 3; ++change)
                file[random() % file.size()] = static_cast<uint8_t>(random());
            const auto picture = read(file);
            const uint64_t pixels = picture
                                        ? static_cast<uint64_t>(picture->image->pixelsWide()) *
                                              static_cast<uint64_t>(picture->image->pixelsHigh())
                                        : 0;
            EXPECT_LE(pixels, plenty);
        }
}

} // namespace
} // namespace paperline
