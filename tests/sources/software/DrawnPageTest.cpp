// Drawn pages: sizes, depths, polarity, noise, and that they are the same every time.
#include "sources/software/DocumentPage.h"
#include "sources/software/PixelPacking.h"
#include "sources/software/SoftwareDevice.h"
#include "sources/software/StrokeFont.h"
#include "tests/sources/software/MemorySink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace paperline::sources {

namespace {

MemorySink scan(const std::string& mode, const std::string& dpi, int pages = 1) {
    SoftwareDevice device;
    MemorySink sink;
    EXPECT_EQ(device.setOption("mode", mode), ScanStatus::good);
    EXPECT_EQ(device.setOption("resolution", dpi), ScanStatus::good);
    EXPECT_EQ(device.start(), ScanStatus::good);
    for (int page = 0; page < pages; ++page)
        EXPECT_EQ(device.readPage(sink), ScanStatus::good);
    return sink;
}

uint8_t greyAt(const MemorySink& sink, int32_t x, int32_t y) {
    return sink.bytes[static_cast<size_t>(y * sink.format.bytesPerRow() + x)];
}

} // namespace

TEST(DrawnPage, HasTheSizeOfAnA4Sheet) {
    const MemorySink sink = scan("Color", "300");
    EXPECT_EQ(sink.format.widthPixels, 2480);
    EXPECT_EQ(sink.format.heightPixels, 3508);
    EXPECT_EQ(sink.format.bitsPerPixel, 24);
    EXPECT_EQ(sink.format.horizontalDpi, 300);
    EXPECT_EQ(sink.finishedRows, 3508);
    EXPECT_EQ(sink.bytes.size(), 2480u * 3508 * 3);
}

TEST(DrawnPage, EveryResolutionAndDepthFillsEveryRow) {
    for (const char* mode : {"Lineart", "Gray", "Color"})
        for (const char* dpi : {"50", "73", "150", "201"}) {
            const MemorySink sink = scan(mode, dpi);
            // The last rows are paper: light in every depth.
            const auto tail =
                std::span(sink.bytes).last(static_cast<size_t>(sink.format.bytesPerRow()));
            EXPECT_TRUE(std::all_of(tail.begin(), tail.end(), [](uint8_t b) { return b > 230; }))
                << mode << dpi;
            EXPECT_EQ(sink.format.heightPixels, std::lround(297 / 25.4 * std::stod(dpi)));
        }
}

TEST(DrawnPage, TheSamePageIsTheSameInEveryRun) {
    EXPECT_EQ(scan("Color", "75").bytes, scan("Color", "75").bytes);
    EXPECT_EQ(scan("Gray", "100", 2).bytes, scan("Gray", "100", 2).bytes);
}

TEST(DrawnPage, PagesDifferInTheirNumberAlone) {
    const MemorySink first = scan("Gray", "100", 1), second = scan("Gray", "100", 2);
    ASSERT_EQ(first.bytes.size(), second.bytes.size());
    int32_t firstRow = INT32_MAX, lastRow = 0;
    for (size_t i = 0; i < first.bytes.size(); ++i)
        if (first.bytes[i] != second.bytes[i]) {
            const auto row = static_cast<int32_t>(i / 827);
            firstRow = std::min(firstRow, row);
            lastRow = std::max(lastRow, row);
        }
    EXPECT_GT(firstRow, 1100); // within the footer of 1169 rows
    EXPECT_LT(lastRow, 1140);
}

TEST(DrawnPage, BlackInkIsZeroInEveryDepth) {
    // The letterhead's blue square at 24 to 33 mm, 16 to 25 mm; its outer edge is dark.
    const MemorySink grey = scan("Gray", "100");
    EXPECT_LT(greyAt(grey, 97, 68), 100);
    EXPECT_GT(greyAt(grey, 20, 20), 235);
    const MemorySink lineart = scan("Lineart", "100");
    const auto bit = [&](int32_t x, int32_t y) {
        return lineart.bytes[static_cast<size_t>(y * lineart.format.bytesPerRow() + x / 8)] >>
                   (7 - x % 8) &
               1;
    };
    EXPECT_EQ(bit(97, 68), 0);
    EXPECT_EQ(bit(20, 20), 1);
    const MemorySink colour = scan("Color", "100");
    const size_t at = static_cast<size_t>(68 * colour.format.bytesPerRow() + 97 * 3);
    EXPECT_LT(colour.bytes[at], 60);      // red
    EXPECT_GT(colour.bytes[at + 2], 120); // blue
}

TEST(DrawnPage, CarriesALittleNoiseButNoneInBlackAndWhite) {
    const MemorySink grey = scan("Gray", "150");
    std::set<uint8_t> levels;
    for (int32_t y = 2; y < 40; ++y)
        for (int32_t x = 2; x < 800; ++x)
            levels.insert(greyAt(grey, x, y));
    EXPECT_GE(levels.size(), 5u);
    EXPECT_LE(*levels.rbegin() - *levels.begin(), 7);
    const MemorySink lineart = scan("Lineart", "150");
    EXPECT_TRUE(std::all_of(lineart.bytes.begin(),
                            lineart.bytes.begin() + 10 * lineart.format.bytesPerRow(),
                            [](uint8_t b) { return b == 0xff; }));
}

TEST(DrawnPage, HasAsMuchInkAsAnOfficePage) {
    const MemorySink grey = scan("Gray", "100");
    const auto dark = std::count_if(
        grey.bytes.begin(), grey.bytes.end(), [](uint8_t level) { return level < 128; });
    const double share = static_cast<double>(dark) / static_cast<double>(grey.bytes.size());
    EXPECT_GT(share, 0.02);
    EXPECT_LT(share, 0.25);
}

TEST(DrawnPage, IsTheSameWhateverPiecesItIsPaintedIn) {
    const PageFormat format{413, 585, 24, 50, 50};
    DocumentPainter painter(format);
    painter.setPage(2, 3);
    const auto row = static_cast<size_t>(format.bytesPerRow());
    std::vector<uint8_t> whole(row * 585), pieces(row * 585);
    painter.paintRows(0, whole);
    for (int32_t first = 0; first < 585;) {
        const int32_t count = std::min(1 + first % 97, 585 - first);
        painter.paintRows(first,
                          std::span(pieces).subspan(static_cast<size_t>(first) * row,
                                                    static_cast<size_t>(count) * row));
        first += count;
    }
    EXPECT_EQ(whole, pieces);
}

TEST(DrawnPage, TinyAndOddSheetsArePaintedToo) {
    for (const auto& [width, height] : {std::pair{20, 20}, {330, 20}, {20, 500}, {148, 105}}) {
        SoftwareDevice device;
        MemorySink sink;
        ASSERT_EQ(device.setOption("width", std::to_string(width)), ScanStatus::good);
        ASSERT_EQ(device.setOption("height", std::to_string(height)), ScanStatus::good);
        ASSERT_EQ(device.setOption("resolution", "60"), ScanStatus::good);
        ASSERT_EQ(device.start(), ScanStatus::good);
        EXPECT_EQ(device.readPage(sink), ScanStatus::good);
        EXPECT_EQ(sink.format.widthPixels, std::lround(width / 25.4 * 60));
    }
}

TEST(StrokeFont, EveryCharacterOfThePageHasStrokes) {
    for (const char character : std::string("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                            "0123456789.,:-/()'%+"))
        EXPECT_FALSE(glyphStrokes(character).strokes.empty()) << character;
    EXPECT_TRUE(glyphStrokes(' ').strokes.empty());
    EXPECT_TRUE(glyphStrokes('\xc3').strokes.empty());
    EXPECT_DOUBLE_EQ(textWidth("11"), 2 * (8.5 + 3.2));
    EXPECT_DOUBLE_EQ(textWidth(""), 0);
}

TEST(StrokeFont, StrokesStayWithinTheLine) {
    for (char character = ' '; character < 127; ++character)
        for (const Stroke& stroke : glyphStrokes(character).strokes)
            for (const StrokePoint& point : stroke) {
                EXPECT_GE(point.y, -5) << character;
                EXPECT_LE(point.y, 17) << character;
                EXPECT_GE(point.x, -1.5) << character;
                EXPECT_LE(point.x, 16) << character;
            }
}

TEST(PenMask, ADotIsRound) {
    const CoverageMask mask = penMask({{{0, 0}, {0, 0}}}, 1, 6);
    int64_t sum = 0;
    for (const uint8_t covered : mask.coverage)
        sum += covered;
    EXPECT_NEAR(static_cast<double>(sum) / 255, 3.14159 * 9, 0.6); // the disc's area
    EXPECT_EQ(mask.left, -4);
    EXPECT_TRUE(penMask({}, 1, 1).coverage.empty());
}

TEST(PixelPacking, EightGreysToABit) {
    const std::vector<uint8_t> grey{0, 127, 128, 255, 0, 255, 0, 255, 10, 200};
    std::vector<uint8_t> bits(2);
    packBlackAndWhite(grey, bits);
    EXPECT_EQ(bits, (std::vector<uint8_t>{0b00110101, 0b01111111}));
}

TEST(PixelPacking, RowsOfEveryDepth) {
    std::vector<uint8_t> grey(3);
    rowToGrey(std::vector<uint8_t>{0b10100000}, 1, grey);
    EXPECT_EQ(grey, (std::vector<uint8_t>{255, 0, 255}));
    rowToGrey(std::vector<uint8_t>{255, 255, 255, 255, 0, 0, 0, 0, 0}, 24, grey);
    EXPECT_EQ(grey, (std::vector<uint8_t>{255, 77, 0}));
    std::vector<uint8_t> colour(6);
    rowToColour(std::vector<uint8_t>{0b01000000}, 1, colour);
    EXPECT_EQ(colour, (std::vector<uint8_t>{0, 0, 0, 255, 255, 255}));
    rowToColour(std::vector<uint8_t>{7, 9}, 8, colour);
    EXPECT_EQ(colour, (std::vector<uint8_t>{7, 7, 7, 9, 9, 9}));
}

} // namespace paperline::sources
