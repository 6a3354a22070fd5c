// Text encodings and date patterns.
#include "platform/host/DatePatterns.h"
#include "platform/host/Utf.h"

#include <bit>
#include <gtest/gtest.h>
#include <limits>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;
static_assert(std::endian::native == std::endian::little, "the expected bytes are little-endian");

TEST(Utf16, StartsWithItsMark) {
    EXPECT_EQ(utf16WithMark(""), (Bytes{0xFF, 0xFE}));
    EXPECT_EQ(utf16WithMark("In \n"), (Bytes{0xFF, 0xFE, 'I', 0, 'n', 0, ' ', 0, '\n', 0}));
}

TEST(Utf16, TakesEveryPlane) {
    EXPECT_EQ(utf16WithMark("\xC3\xA4"), (Bytes{0xFF, 0xFE, 0xE4, 0x00}));     // ä
    EXPECT_EQ(utf16WithMark("\xE7\xB9\x81"), (Bytes{0xFF, 0xFE, 0x41, 0x7E})); // 繁
    EXPECT_EQ(utf16WithMark("\xF0\x9F\x98\x80"), (Bytes{0xFF, 0xFE, 0x3D, 0xD8, 0x00, 0xDE}));
    EXPECT_EQ(utf16WithMark(std::string_view("\0", 1)), (Bytes{0xFF, 0xFE, 0, 0}));
}

TEST(Utf16, ReplacesWhatIsInvalid) {
    const Bytes one{0xFF, 0xFE, 0xFD, 0xFF};
    EXPECT_EQ(utf16WithMark("\x80"), one);
    EXPECT_EQ(utf16WithMark("\xC3"), one);
    EXPECT_EQ(utf16WithMark("\xE7\xB9"), one);
    EXPECT_EQ(utf16WithMark("\xE7\xB9x"), (Bytes{0xFF, 0xFE, 0xFD, 0xFF, 'x', 0}));
    EXPECT_EQ(utf16WithMark("\xC0\xAF").size(), 6U);          // overlong: two replacements
    EXPECT_EQ(utf16WithMark("\xED\xA0\x80").size(), 8U);      // surrogate: three
    EXPECT_EQ(utf16WithMark("\xF4\x90\x80\x80").size(), 10U); // above U+10FFFF: four
}

TEST(Utf8, IsJudged) {
    for (const char* good : {"",
                             "a",
                             "\xC3\xA4",
                             "\xED\x9F\xBF",
                             "\xEE\x80\x80",
                             "\xF4\x8F\xBF\xBF",
                             "\xF0\x90\x80\x80"})
        EXPECT_TRUE(isValidUtf8(good)) << good;
    for (const char* bad : {"\x80",
                            "\xC3",
                            "\xC1\xBF",
                            "\xE0\x80\x80",
                            "\xED\xA0\x80",
                            "\xF0\x80\x80\x80",
                            "\xF4\x90\x80\x80",
                            "\xF5\x80\x80\x80",
                            "\xFF",
                            "a\xE7\xB9"})
        EXPECT_FALSE(isValidUtf8(bad)) << bad;
}

TEST(Utf8, IsCountedUpToTheFirstInvalidByte) {
    EXPECT_EQ(validUtf8Length(""), 0U);
    EXPECT_EQ(validUtf8Length("a\xC3\xA4"), 3U);
    EXPECT_EQ(validUtf8Length("a\xC3\xA4\xE7\xB9"), 3U);
    EXPECT_EQ(validUtf8Length("\xFF"), 0U);
}

TEST(Utf8, IsMadeOfCodePointsOfEveryLength) {
    std::string text;
    for (const uint32_t codePoint : {0x41U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xFFFFU, 0x10000U})
        appendUtf8(text, codePoint);
    EXPECT_EQ(text, "A\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80");
}

TEST(Utf8, IsMadeOfLatin1) {
    EXPECT_EQ(utf8FromLatin1("Gr\xF6\xDF"
                             "e"),
              "Gr\xC3\xB6\xC3\x9F"
              "e");
}

TEST(Utf8, IsCutBetweenCharacters) {
    EXPECT_EQ(wholeCharacters("abc", 2), "ab");
    EXPECT_EQ(wholeCharacters("abc", 9), "abc");
    EXPECT_EQ(wholeCharacters("a\xC3\xA4", 2), "a");
    EXPECT_EQ(wholeCharacters("a\xC3\xA4", 3), "a\xC3\xA4");
    EXPECT_EQ(wholeCharacters("\xF0\x9F\x98\x80", 3), "");
    EXPECT_EQ(wholeCharacters("\xF0\x9F\x98\x80x", 4), "\xF0\x9F\x98\x80");
    EXPECT_EQ(wholeCharacters("abc", 0), "");
}

constexpr double lastDayOf2026 = 1798675200 + 12 * 3600; // 2026-12-31T12:00:00Z
constexpr double newYear2027 = lastDayOf2026 + 86400;

std::string date(double moment, const std::string& locale, const std::string& pattern) {
    return formatDate({moment, locale, "UTC"}, pattern);
}

TEST(DatePatterns, UseTheLocalesWeekYear) {
    EXPECT_EQ(date(lastDayOf2026, "en_US", "YYYYMMdd"), "20271231");
    EXPECT_EQ(date(lastDayOf2026, "de_DE", "YYYYMMdd"), "20261231");
    EXPECT_EQ(date(newYear2027, "en_US", "YYYYMMdd"), "20270101");
    EXPECT_EQ(date(newYear2027, "de_DE", "YYYYMMdd"), "20260101");
    EXPECT_EQ(date(lastDayOf2026, "en_US", "yyyyMMdd"), "20261231");
}

TEST(DatePatterns, UseTheGregorianCalendarAndPlainDigits) {
    // Weeks begin on Sunday in both countries; the Thai year would be 2570, the Saudi one 1448.
    EXPECT_EQ(date(newYear2027, "th_TH", "YYYYMMdd"), "20270101");
    EXPECT_EQ(date(newYear2027, "ar_SA", "YYYYMMdd"), "20270101");
    EXPECT_EQ(date(lastDayOf2026, "th_TH", "yyyy-MM-dd HH:mm:ss"), "2026-12-31 12:00:00");
    EXPECT_EQ(date(lastDayOf2026, "ar_SA", "yyyy-MM-dd HH:mm:ss"), "2026-12-31 12:00:00");
    EXPECT_EQ(date(lastDayOf2026, "fa_IR", "yyyyMMdd"), "20261231");
    EXPECT_EQ(date(lastDayOf2026, "ar_EG", "M"), "12");
}

TEST(DatePatterns, FillEveryToken) {
    const double moment = 1768573530; // 2026-01-16T14:25:30Z
    EXPECT_EQ(date(moment, "en_US", "YYYYMMdd"), "20260116");
    EXPECT_EQ(date(moment, "en_US", "YYYY"), "2026");
    EXPECT_EQ(date(moment, "en_US", "M"), "1");
    EXPECT_EQ(date(moment, "en_US", "MM"), "01");
    EXPECT_EQ(date(moment, "en_US", "dd"), "16");
    EXPECT_EQ(date(moment, "en_US", "HHmmss"), "142530");
    EXPECT_EQ(date(moment, "en_US", "HH"), "14");
    EXPECT_EQ(date(moment, "en_US", "mm"), "25");
    EXPECT_EQ(date(moment, "en_US", "ss"), "30");
    EXPECT_EQ(date(moment + 0.123, "en_US", "HH:mm:ss.SSS"), "14:25:30.123");
    EXPECT_EQ(date(moment + 0.9999, "en_US", "ss.SSS"), "30.999");
}

TEST(DatePatterns, FollowTheTimeZone) {
    const double moment = 1798758000; // 2026-12-31T23:00:00Z
    EXPECT_EQ(formatDate({moment, "de_DE", "Europe/Berlin"}, "yyyyMMdd HHmm"), "20270101 0000");
    EXPECT_EQ(formatDate({moment, "de_DE", "America/New_York"}, "yyyyMMdd HHmm"), "20261231 1800");
}

TEST(DatePatterns, RefuseWhatCannotBeUsed) {
    EXPECT_EQ(date(newYear2027, "en_US", "JJJ"), "");
    EXPECT_EQ(date(std::numeric_limits<double>::quiet_NaN(), "en_US", "HH"), "");
    EXPECT_EQ(date(newYear2027, "en_US", ""), "");
}

TEST(DatePatterns, TakeAnyLocaleName) {
    EXPECT_EQ(date(newYear2027, "", "yyyy"), "2027");
    EXPECT_EQ(date(newYear2027, "no such locale", "yyyy"), "2027");
    EXPECT_EQ(date(newYear2027, std::string(500, 'x'), "yyyy"), "2027");
}

} // namespace
} // namespace paperline
