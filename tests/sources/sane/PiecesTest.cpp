// The small parts: texts of options, defaults, statuses, rows.
#include "sources/sane/DeviceDefaults.h"
#include "sources/sane/DeviceListing.h"
#include "sources/sane/FrameRows.h"
#include "sources/sane/SaneValues.h"
#include "sources/sane/StatusText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>

namespace paperline::sources {
namespace {

using testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

TEST(SaneValues, NumbersAreReadAndWrittenInEveryLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    EXPECT_EQ(saneWordText(300, false), "300");
    EXPECT_EQ(saneWordText(210 * 65536, true), "210");
    EXPECT_EQ(saneWordText(65536 / 4, true), "0.25");
    EXPECT_EQ(saneWordText(-2763653, true), "-42.17");
    EXPECT_EQ(saneWordText(-1, true), "0");
    EXPECT_EQ(saneWordFromText(" 300 ", false), 300);
    EXPECT_EQ(saneWordFromText("+0.25", true), 16384);
    EXPECT_EQ(saneWordFromText("-42.17", true), -2763653);
    std::setlocale(LC_ALL, before.c_str());
}

TEST(SaneValues, RefusesWhatIsNoNumberOrDoesNotFit) {
    for (const char* text : {"", "x", "3x", "300dpi", "nan", "inf", "1e999", "0,5"})
        EXPECT_EQ(saneWordFromText(text, true), std::nullopt) << text;
    EXPECT_EQ(saneWordFromText("40000", true), std::nullopt);
    EXPECT_EQ(saneWordFromText("3000000000", false), std::nullopt);
}

TEST(SaneValues, BooleansHaveManyWords) {
    for (const char* text : {"yes", "TRUE", "on", "1", " Yes "})
        EXPECT_EQ(booleanFromText(text), true) << text;
    for (const char* text : {"no", "false", "OFF", "0"})
        EXPECT_EQ(booleanFromText(text), false) << text;
    EXPECT_EQ(booleanFromText("maybe"), std::nullopt);
    EXPECT_EQ(booleanFromText(""), std::nullopt);
}

TEST(SaneValues, AChoiceIsMeantByItsTextOrItsOnlyLikeness) {
    EXPECT_EQ(matchingChoice({"Gray", "Color"}, "color"), 1u);
    EXPECT_EQ(matchingChoice({"gray", "Gray"}, "Gray"), 1u);
    EXPECT_EQ(matchingChoice({"gray", "Gray"}, "GRAY"), std::nullopt);
    EXPECT_EQ(matchingChoice({"Gray"}, "Gra"), std::nullopt);
}

TEST(SaneValues, OldDriversSpeakLatin1) {
    EXPECT_EQ(utf8FromDriver("Andr\xE9"), "Andr\xC3\xA9");
    EXPECT_EQ(utf8FromDriver("Andr\xC3\xA9"), "Andr\xC3\xA9");
    EXPECT_EQ(utf8FromDriver(nullptr), "");
    EXPECT_EQ(utf8FromDriver("\xE2\x82"), "\xC3\xA2\xC2\x82");
}

TEST(SaneValues, ListsHaveCommas) {
    EXPECT_THAT(listParts("1, 2,3 "), ElementsAre("1", "2", "3"));
    EXPECT_THAT(listParts(""), ElementsAre(""));
    EXPECT_THAT(listParts("1,"), ElementsAre("1", ""));
}

TEST(DeviceDefaults, PreferColourThenGrey) {
    using Choices = std::vector<std::string>;
    EXPECT_EQ(preferredMode(Choices{"Lineart", "Gray", "Color"}), "Color");
    EXPECT_EQ(preferredMode(Choices{"Lineart", "48 bit Color", "24 bit Color"}), "24 bit Color");
    EXPECT_EQ(preferredMode(Choices{"Color Lineart", "Color Halftone", "True Color"}),
              "True Color");
    EXPECT_EQ(preferredMode(Choices{"Lineart", "Grayscale"}), "Grayscale");
    EXPECT_EQ(preferredMode(Choices{"Lineart", "8-bit grey"}), "8-bit grey");
    EXPECT_EQ(preferredMode(Choices{"Lineart", "Halftone"}), std::nullopt);
}

TEST(DeviceDefaults, TakeTheNearestResolution) {
    OptionDescriptor option;
    option.kind = OptionKind::integer;
    option.choices = {"75", "150", "600"};
    EXPECT_EQ(nearestValue(option, 300), "150");
    option.choices.clear();
    EXPECT_EQ(nearestValue(option, 300), std::nullopt);
    option.hasRange = true;
    option.minimum = 50;
    option.maximum = 1200;
    EXPECT_EQ(nearestValue(option, 300), "300");
    option.step = 40; // 290, 330
    EXPECT_EQ(nearestValue(option, 300), "290");
    option.maximum = 200; // the last step is at 170 and 210 would be past the end
    EXPECT_EQ(nearestValue(option, 300), "170");
    option.minimum = 400;
    EXPECT_EQ(nearestValue(option, 300), std::nullopt);
}

OptionDescriptor valued(const char* name, const char* value, bool active = true) {
    OptionDescriptor option;
    option.name = name;
    option.value = value;
    option.active = active;
    return option;
}

TEST(DeviceDefaults, APageHasTheResolutionOfTheOptions) {
    PageResolution resolution = pageResolution({valued("resolution", "300")});
    EXPECT_EQ(resolution.horizontalDpi, 300);
    EXPECT_EQ(resolution.verticalDpi, 300);
    resolution = pageResolution({valued("resolution", "300"), valued("y-resolution", "150")});
    EXPECT_EQ(resolution.horizontalDpi, 300);
    EXPECT_EQ(resolution.verticalDpi, 150);
    resolution = pageResolution({valued("x-resolution", "72.5"), valued("y-resolution", "150")});
    EXPECT_EQ(resolution.horizontalDpi, 72.5);
    resolution = pageResolution({valued("resolution", "300"), valued("y-resolution", "7", false)});
    EXPECT_EQ(resolution.verticalDpi, 300);
    resolution = pageResolution({valued("mode", "Gray")});
    EXPECT_EQ(resolution.horizontalDpi, 0);
}

TEST(DeviceDefaults, KnowAFeederByTheSourcesName) {
    for (const char* source :
         {"ADF", "Automatic Document Feeder", "adf front", "Duplex", "Feeder(left)"})
        EXPECT_TRUE(usesFeeder({valued("source", source)})) << source;
    EXPECT_FALSE(usesFeeder({valued("source", "Flatbed")}));
    EXPECT_FALSE(usesFeeder({valued("source", "ADF", false)}));
    EXPECT_FALSE(usesFeeder({valued("mode", "ADF")}));
}

TEST(SaneStatuses, HaveAMeaningAndASentence) {
    EXPECT_EQ(scanStatus(SaneStatus::good), ScanStatus::good);
    EXPECT_STREQ(statusText(SaneStatus::good), "");
    EXPECT_EQ(scanStatus(SaneStatus::jammed), ScanStatus::paperJam);
    EXPECT_EQ(scanStatus(SaneStatus::noDocs), ScanStatus::noMorePages);
    // A number that later versions of the standard may bring.
    EXPECT_EQ(scanStatus(static_cast<SaneStatus>(12)), ScanStatus::ioError);
    EXPECT_STREQ(statusText(static_cast<SaneStatus>(12)),
                 "The scanner reports an unknown failure.");
}

SaneParameters frameOf(SaneFrame frame, int32_t depth, int32_t pixels) {
    SaneParameters parameters;
    parameters.frame = frame;
    parameters.depth = depth;
    parameters.pixelsPerLine = pixels;
    parameters.bytesPerLine = static_cast<int32_t>(packedLineBytes(parameters));
    return parameters;
}

Bytes rowOf(const SaneParameters& parameters, const Bytes& line, Bytes row) {
    lineToRow(parameters, line, row);
    return row;
}

Bytes words(std::initializer_list<uint16_t> values) {
    Bytes bytes;
    for (const uint16_t value : values) {
        const auto* start = reinterpret_cast<const uint8_t*>(&value);
        bytes.insert(bytes.end(), start, start + 2);
    }
    return bytes;
}

TEST(FrameRows, LineartIsTurnedAndItsTailIsWhite) {
    EXPECT_EQ(rowOf(frameOf(SaneFrame::gray, 1, 10), {0b11110000, 0b10111111}, Bytes(2)),
              (Bytes{0b00001111, 0b01111111}));
    EXPECT_EQ(rowOf(frameOf(SaneFrame::gray, 1, 8), {0xFF}, Bytes(1)), (Bytes{0}));
}

TEST(FrameRows, SixteenBitsAreRounded) {
    // 128 is the last word nearer to level 0, 129 the first nearer to level 1.
    EXPECT_EQ(
        rowOf(frameOf(SaneFrame::gray, 16, 6), words({0, 128, 129, 32767, 32768, 65535}), Bytes(6)),
        (Bytes{0, 0, 1, 127, 128, 255}));
    EXPECT_EQ(rowOf(frameOf(SaneFrame::rgb, 16, 1), words({257, 514, 65535}), Bytes(3)),
              (Bytes{1, 2, 255}));
}

TEST(FrameRows, OneBitColourHasAByteForEachColour) {
    // Ten pixels: red on the left, blue on the right, green at the ninth.
    const Bytes line{0b11110000, 0, 0b00001111, 0, 0b10000000, 0b01000000};
    const Bytes row = rowOf(frameOf(SaneFrame::rgb, 1, 10), line, Bytes(30));
    EXPECT_EQ((Bytes{row.begin(), row.begin() + 3}), (Bytes{255, 0, 0}));
    EXPECT_EQ((Bytes{row.begin() + 12, row.begin() + 15}), (Bytes{0, 0, 255}));
    EXPECT_EQ((Bytes{row.begin() + 24, row.begin() + 30}), (Bytes{0, 255, 0, 0, 0, 255}));
}

TEST(FrameRows, SingleColoursLeaveTheOthersAlone) {
    Bytes row(6, 9);
    row = rowOf(frameOf(SaneFrame::green, 8, 2), {1, 2}, row);
    EXPECT_EQ(row, (Bytes{9, 1, 9, 9, 2, 9}));
    row = rowOf(frameOf(SaneFrame::blue, 1, 2), {0b01000000}, row);
    EXPECT_EQ(row, (Bytes{9, 1, 0, 9, 2, 255}));
    row = rowOf(frameOf(SaneFrame::red, 16, 2), words({257, 65535}), row);
    EXPECT_EQ(row, (Bytes{1, 1, 0, 255, 2, 255}));
}

TEST(FrameRows, OnlyUnpaddedEightBitLinesAreRowsAsTheyStand) {
    EXPECT_TRUE(linesAreRows(frameOf(SaneFrame::rgb, 8, 5)));
    EXPECT_TRUE(linesAreRows(frameOf(SaneFrame::gray, 8, 5)));
    EXPECT_FALSE(linesAreRows(frameOf(SaneFrame::gray, 1, 5)));
    EXPECT_FALSE(linesAreRows(frameOf(SaneFrame::gray, 16, 5)));
    EXPECT_FALSE(linesAreRows(frameOf(SaneFrame::red, 8, 5)));
    SaneParameters padded = frameOf(SaneFrame::gray, 8, 5);
    ++padded.bytesPerLine;
    EXPECT_FALSE(linesAreRows(padded));
}

TEST(FrameRows, KnowOnlyDepthsOfTheStandard) {
    EXPECT_EQ(pageBits(frameOf(SaneFrame::gray, 1, 1)), 1);
    EXPECT_EQ(pageBits(frameOf(SaneFrame::gray, 16, 1)), 8);
    EXPECT_EQ(pageBits(frameOf(SaneFrame::red, 1, 1)), 24);
    SaneParameters odd = frameOf(SaneFrame::gray, 8, 1);
    odd.depth = 12;
    EXPECT_EQ(pageBits(odd), 0);
    EXPECT_EQ(pageBits(frameOf(SaneFrame::other, 8, 1)), 0);
}

TEST(BackendNames, AreTheLinesWithoutComments) {
    EXPECT_THAT(backendLines("net\n# test\n  epson2  # a comment\r\n\n\tpnm"),
                ElementsAre("net", "epson2", "pnm"));
}

} // namespace
} // namespace paperline::sources
