#include "codecs/tiff/TiffWriter.h"

#include "PagePictures.h"
#include "codecs/tiff/TiffCodec.h"
#include "platform/files/FileContent.h"
#include "tests/support/FileTesting.h"

#include <gtest/gtest.h>
#include <map>

namespace paperline {
namespace {

using namespace testing_support;
using Bytes = std::vector<uint8_t>;

Bytes encoded(const BitmapImageRep& page, const TiffOptions& options = {}) {
    return encodeTiff(page, options).value_or(Bytes());
}

uint32_t littleEndian(const Bytes& bytes, size_t at, size_t count) {
    uint32_t number = 0;
    for (size_t index = count; index > 0; --index)
        number = number << 8U | bytes.at(at + index - 1);
    return number;
}

// The first directory: tag to value, or to the place of the values that do not fit.
std::map<uint32_t, uint32_t> directory(const Bytes& file) {
    std::map<uint32_t, uint32_t> entries;
    const size_t at = littleEndian(file, 4, 4);
    const uint32_t count = littleEndian(file, at, 2);
    for (size_t entry = at + 2; entry < at + 2 + 12 * size_t{count}; entry += 12) {
        const bool isShort = littleEndian(file, entry + 2, 2) == 3;
        const bool isOne = littleEndian(file, entry + 4, 4) == 1;
        entries[littleEndian(file, entry, 2)] =
            littleEndian(file, entry + 8, isShort && isOne ? 2 : 4);
    }
    EXPECT_EQ(littleEndian(file, at + 2 + 12 * size_t{count}, 4), 0U); // no second page
    return entries;
}

TEST(TiffWriter, TagsOfAColourPage) {
    const Bytes file = encoded(*noisePage(5, 4, 24), {300, 200, 1});
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 4), (Bytes{'I', 'I', 42, 0}));
    auto tags = directory(file);
    EXPECT_EQ(tags[256], 5U);
    EXPECT_EQ(tags[257], 4U);
    EXPECT_EQ(littleEndian(file, tags[258], 2), 8U); // three of them
    EXPECT_EQ(tags[259], 5U);                        // LZW
    EXPECT_EQ(tags[262], 2U);                        // RGB
    EXPECT_EQ(tags[273], 8U);                        // one strip, right behind the header
    EXPECT_EQ(tags[277], 3U);
    EXPECT_EQ(tags[278], 4U);
    EXPECT_EQ(tags[284], 1U);
    EXPECT_EQ(tags[296], 2U); // inches
    EXPECT_EQ(tags[317], 2U); // horizontal differences
    const auto fraction = [&](uint32_t tag) {
        return std::pair(littleEndian(file, tags[tag], 4), littleEndian(file, tags[tag] + 4, 4));
    };
    EXPECT_EQ(fraction(282), std::pair(300U, 1U));
    EXPECT_EQ(fraction(283), std::pair(200U, 1U));
}

TEST(TiffWriter, TagsOfAGreyAndAOneBitPage) {
    auto grey = directory(encoded(*noisePage(5, 4, 8)));
    EXPECT_EQ(grey[258], 8U);
    EXPECT_EQ(grey[262], 1U); // 0 is black
    EXPECT_EQ(grey[277], 1U);
    EXPECT_EQ(grey[317], 2U);
    auto bits = directory(encoded(*noisePage(5, 4, 1)));
    EXPECT_EQ(bits[258], 1U);
    EXPECT_EQ(bits[259], 5U);
    EXPECT_EQ(bits[262], 1U);
    EXPECT_EQ(bits.count(317), 0U);
}

// 9-bit codes, the highest bit first: clear (256), the pixel, its differences, end (257).
TEST(TiffWriter, TheStripOfThreeGreyPixels) {
    const Bytes file =
        encoded(*filledPage(3, 1, 8, [](size_t at) { return static_cast<uint8_t>(100 + 7 * at); }));
    const auto tags = directory(file);
    ASSERT_EQ(tags.at(279), 6U);
    // 100000000 001100100 000000111 000000111 100000001, padded with zeros
    const Bytes expected{0x80, 0x19, 0x00, 0xE0, 0x78, 0x08};
    EXPECT_EQ(Bytes(file.begin() + 8, file.begin() + 14), expected);
}

TEST(TiffWriter, EveryPixelComesBack) {
    const TestFolder folder;
    for (const int bits : {1, 8, 24})
        for (const PagePointer& page : edgePages(bits)) {
            ASSERT_TRUE(writeFile(folder / "page", encoded(*page)));
            const auto picture = decodeTiffPage(folder / "page", 0, 100'000'000);
            ASSERT_TRUE(picture.has_value()) << page->pixelsWide() << "x" << page->pixelsHigh();
            expectSamePixels(*page, *picture->image);
        }
}

TEST(TiffWriter, ResolutionsComeBackAsTheyWere) {
    const TestFolder folder;
    for (const double dpi : {100, 150, 200, 240, 300, 400, 600, 1200}) {
        ASSERT_TRUE(writeFile(folder / "page", encoded(*noisePage(2, 2, 8), {dpi, 75, 1})));
        const auto picture = decodeTiffPage(folder / "page", 0, 100);
        ASSERT_TRUE(picture.has_value());
        EXPECT_EQ(picture->horizontalDpi, dpi);
        EXPECT_EQ(picture->verticalDpi, 75);
    }
}

TEST(TiffWriter, TheFileIsTheSameForEveryNumberOfThreads) {
    for (const int bits : {1, 8, 24}) {
        const PagePointer page = noisePage(1500, bits == 1 ? 4100 : 900, bits); // several strips
        const Bytes alone = encoded(*page, {300, 300, 1});
        ASSERT_FALSE(alone.empty());
        for (const unsigned threads : {2U, 3U, 7U})
            EXPECT_EQ(encoded(*page, {300, 300, threads}), alone);
    }
}

TEST(TiffWriter, BitsBehindTheLastPixelAreZero) {
    const PagePointer page = noisePage(13, 9, 1);
    const Bytes file = encoded(*page);
    for (int32_t y = 0; y < 9; ++y)
        page->row(y)[1] = static_cast<uint8_t>(page->row(y)[1] ^ 0x07);
    EXPECT_EQ(encoded(*page), file);
}

TEST(TiffWriter, OtherDepthsAreRefused) {
    EXPECT_FALSE(encodeTiff(*BitmapImageRep::make({2, 2, 16, 1, 16, 4}), {}).has_value());
    EXPECT_FALSE(encodeTiff(*BitmapImageRep::make({2, 2, 8, 4, 32, 8}), {}).has_value());
}

} // namespace
} // namespace paperline
