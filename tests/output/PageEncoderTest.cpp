#include "output/PageEncoder.h"

#include "base/FileFormats.h"

#include <gtest/gtest.h>

namespace paperline {
namespace {

std::shared_ptr<BitmapImageRep> greyPage(int32_t wide, int32_t high) {
    return BitmapImageRep::make({.pixelsWide = wide,
                                 .pixelsHigh = high,
                                 .bitsPerSample = 8,
                                 .samplesPerPixel = 1,
                                 .bitsPerPixel = 8,
                                 .bytesPerRow = wide});
}

PageCodecs::Encoder answering(uint8_t mark) {
    return [mark](const BitmapImageRep&, Density) { return std::vector<uint8_t>{mark}; };
}

TEST(PageEncoder, EachTypeGoesToItsEncoder) {
    PageCodecs codecs;
    codecs.tiff = answering(0);
    codecs.gif = answering(2);
    codecs.jpeg = answering(3);
    codecs.png = answering(4);
    const auto page = greyPage(2, 2);
    for (const int32_t type : {imageTypeTiff, imageTypeGif, imageTypeJpeg, imageTypePng}) {
        const EncodedPage encoded = encodePage(codecs, *page, type, {});
        EXPECT_EQ(encoded.bytes, std::vector<uint8_t>{static_cast<uint8_t>(type)});
        EXPECT_EQ(encoded.failure, "");
    }
}

TEST(PageEncoder, AnUnknownTypeAndARefusalSayWhy) {
    PageCodecs codecs;
    codecs.gif = [](const BitmapImageRep&, Density) { return std::nullopt; };
    const auto page = greyPage(2, 2);
    EXPECT_NE(encodePage(codecs, *page, 1, {}).failure, "");
    EXPECT_NE(encodePage(codecs, *page, imageTypeGif, {}).failure, "");
    EXPECT_NE(encodePage(codecs, *page, imageTypePng, {}).failure, "");
}

TEST(PageEncoder, TheDensityReachesTheEncoder) {
    PageCodecs codecs;
    Density seen;
    codecs.png = [&seen](const BitmapImageRep&, Density density) {
        seen = density;
        return std::vector<uint8_t>{1};
    };
    (void)encodePage(codecs, *greyPage(1, 1), imageTypePng, {299.5, 301.5});
    EXPECT_EQ(seen, (Density{299.5, 301.5}));
}

TEST(PageEncoder, AFormatNeedsEveryPartOfItsWay) {
    PageCodecs codecs;
    EXPECT_TRUE(canWriteFormat(codecs, formatBmp));
    EXPECT_TRUE(canWriteFormat(codecs, 99)); // writes nothing
    for (int32_t code = formatJpeg; code <= formatPng; ++code)
        EXPECT_FALSE(canWriteFormat(codecs, code)) << code;
    codecs.jpeg = answering(3);
    EXPECT_TRUE(canWriteFormat(codecs, formatJpeg));
    EXPECT_FALSE(canWriteFormat(codecs, formatPdf));
    EXPECT_FALSE(canWriteFormat(codecs, formatMultiPagePdf));
    codecs.pdf = [](const std::string&) { return nullptr; };
    EXPECT_TRUE(canWriteFormat(codecs, formatPdf));
    EXPECT_TRUE(canWriteFormat(codecs, formatMultiPagePdf));
    codecs.tiff = answering(0);
    EXPECT_TRUE(canWriteFormat(codecs, formatTiff));
    EXPECT_FALSE(canWriteFormat(codecs, formatMultiPageTiff));
    codecs.tiffDeclared300Dpi = codecs.pdf;
    codecs.tiffUnchanged = codecs.pdf;
    EXPECT_TRUE(canWriteFormat(codecs, formatMultiPageTiff));
}

TEST(PageEncoder, JpegRecordsWholeDotsPerInchInItsHeader) {
    const EncodedPage encoded =
        encodePage(platformCodecs(), *greyPage(16, 16), imageTypeJpeg, {299.597, 600.4});
    ASSERT_GT(encoded.bytes.size(), 18U);
    const std::vector<uint8_t> start(encoded.bytes.begin(), encoded.bytes.begin() + 18);
    EXPECT_EQ(start,
              (std::vector<uint8_t>{0xFF,
                                    0xD8,
                                    0xFF,
                                    0xE0,
                                    0,
                                    16,
                                    'J',
                                    'F',
                                    'I',
                                    'F',
                                    0,
                                    1,
                                    start[12],
                                    1,
                                    0x01,
                                    0x2C,
                                    0x02,
                                    0x58}));
}

} // namespace
} // namespace paperline
