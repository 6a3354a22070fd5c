// Fixed-point numbers, units and the TIFF header.
#include "sources/framework/FixedPoint.h"
#include "sources/framework/StatusCodes.h"
#include "sources/framework/TiffPage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>

namespace paperline::sources {

namespace {

std::pair<int, int> fixed(double number) {
    const auto value = toFix32(number);
    return {value.Whole, value.Frac};
}

} // namespace

TEST(FixedPoint, WholePartAndSixtyFiveThousandths) {
    EXPECT_EQ(fixed(300), std::pair(300, 0));
    EXPECT_EQ(fixed(8.5), std::pair(8, 32768));
    EXPECT_EQ(fixed(-0.25), std::pair(-1, 49152));
    EXPECT_EQ(fixed(1.0 / 65536), std::pair(0, 1));
    EXPECT_EQ(fixed(1e9), std::pair(32767, 65535));
    EXPECT_EQ(fixed(-1e9), std::pair(-32768, 0));
    EXPECT_EQ(fixed(std::nan("")), std::pair(0, 0));
    EXPECT_EQ(fix32Item(-0.25), 0xc000ffffu);
    EXPECT_DOUBLE_EQ(fix32FromItem(0xc000ffffu), -0.25);
}

TEST(FixedPoint, ResolutionsInDotsPerInchAreWhole) {
    EXPECT_DOUBLE_EQ(resolutionInUnits(299.72, twain::TWUN_INCHES), 300);
    EXPECT_DOUBLE_EQ(resolutionInUnits(300.49, twain::TWUN_INCHES), 300);
    EXPECT_DOUBLE_EQ(resolutionInUnits(254, twain::TWUN_CENTIMETERS), 100);
    EXPECT_DOUBLE_EQ(dpiFromUnits(100, twain::TWUN_CENTIMETERS), 254);
    EXPECT_DOUBLE_EQ(lengthInUnits(10, twain::TWUN_CENTIMETERS), 25.4);
    EXPECT_DOUBLE_EQ(inchesFromUnits(25.4, twain::TWUN_CENTIMETERS), 10);
}

TEST(TiffPage, HeaderOfAGreyPageByteForByte) {
    const auto header = tiffHeader({3, 2, 8, 150, 200});
    ASSERT_TRUE(header);
    const std::vector<uint8_t> expected{
        'I',  'I',  42, 0, 8,    0, 0, 0, 13,   0,          // one directory of 13 entries
        254,  0,    4,  0, 1,    0, 0, 0, 0,    0,    0, 0, // a page like any other
        0,    1,    4,  0, 1,    0, 0, 0, 3,    0,    0, 0, // width
        1,    1,    4,  0, 1,    0, 0, 0, 2,    0,    0, 0, // height
        2,    1,    3,  0, 1,    0, 0, 0, 8,    0,    0, 0, // bits
        3,    1,    3,  0, 1,    0, 0, 0, 1,    0,    0, 0, // not compressed
        6,    1,    3,  0, 1,    0, 0, 0, 1,    0,    0, 0, // zero is black
        0x11, 1,    4,  0, 1,    0, 0, 0, 192,  0,    0, 0, // the pixels follow
        0x15, 1,    3,  0, 1,    0, 0, 0, 1,    0,    0, 0, // one sample
        0x16, 1,    4,  0, 1,    0, 0, 0, 2,    0,    0, 0, // one strip
        0x17, 1,    4,  0, 1,    0, 0, 0, 6,    0,    0, 0, // of six bytes
        0x1a, 1,    5,  0, 1,    0, 0, 0, 176,  0,    0, 0, 0x1b, 1, 5, 0,
        1,    0,    0,  0, 184,  0, 0, 0,                                 // resolutions
        0x28, 1,    3,  0, 1,    0, 0, 0, 2,    0,    0, 0,               // per inch
        0,    0,    0,  0,                                                // no next directory
        8,    0,    8,  0, 8,    0,                                       // bits of three samples
        0xf0, 0x49, 2,  0, 0xe8, 3, 0, 0, 0x40, 0x0d, 3, 0, 0xe8, 3, 0, 0 // 150 and 200
    };
    EXPECT_EQ(*header, expected);
}

TEST(TiffPage, ImpossiblePagesHaveNoHeader) {
    EXPECT_FALSE(tiffHeader({0, 2, 8, 0, 0}));
    EXPECT_FALSE(tiffHeader({2, -1, 8, 0, 0}));
    EXPECT_FALSE(tiffHeader({2, 2, 4, 0, 0}));
    EXPECT_FALSE(tiffHeader({70000, 70000, 8, 0, 0})) << "past 4 GiB";
    EXPECT_EQ(pageByteCount({17, 2, 1, 0, 0}), 6);
    EXPECT_EQ(pageByteCount({INT32_MAX, 1, 24, 0, 0}), 0);
    EXPECT_EQ(pageByteCount({70000, 70000, 8, 0, 0}), 0);
    EXPECT_EQ(pageByteCount({2, 2, 8, std::nan(""), 0}), 0);
}

TEST(StatusCodes, EveryConditionHasItsText) {
    std::set<std::string> texts;
    for (const uint16_t code : {twain::TWCC_SUCCESS,
                                twain::TWCC_LOWMEMORY,
                                twain::TWCC_MAXCONNECTIONS,
                                twain::TWCC_OPERATIONERROR,
                                twain::TWCC_BADPROTOCOL,
                                twain::TWCC_BADVALUE,
                                twain::TWCC_SEQERROR,
                                twain::TWCC_DENIED,
                                twain::TWCC_PAPERJAM,
                                twain::TWCC_FILEWRITEERROR,
                                twain::TWCC_CHECKDEVICEONLINE,
                                twain::TWCC_INTERLOCK,
                                twain::TWCC_NOMEDIA,
                                twain::TWCC_NODS,
                                twain::conditionWorkerHung})
        EXPECT_TRUE(texts.insert(conditionText(code)).second) << code;
    EXPECT_STREQ(conditionText(9999), "The operation failed");
}

} // namespace paperline::sources
