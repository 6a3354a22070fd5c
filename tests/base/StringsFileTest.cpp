#include "base/StringsFile.h"

#include <gmock/gmock.h>

#include <string_view>
#include <vector>

namespace paperline {
namespace {

using namespace std::string_literals;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

StringsFile parse(std::string_view text) {
    return parseStringsFile({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

TEST(StringsFile, ReadsEntriesBetweenComments) {
    const StringsFile file =
        parse("/* Toolbar */\n\"Scan\" = \"Scannen\";\n// menu\n\"Quit\"=\"Ende\";");
    EXPECT_FALSE(file.damaged);
    EXPECT_THAT(file.texts, UnorderedElementsAre(Pair("Scan", "Scannen"), Pair("Quit", "Ende")));
}

TEST(StringsFile, ReadsBareWordsAndKeysThatAreTheirOwnText) {
    const StringsFile file = parse("Scan = Scannen;\n\"OK\";\nCancel;");
    EXPECT_FALSE(file.damaged);
    EXPECT_THAT(
        file.texts,
        UnorderedElementsAre(Pair("Scan", "Scannen"), Pair("OK", "OK"), Pair("Cancel", "Cancel")));
}

TEST(StringsFile, ReadsEscapes) {
    const StringsFile file =
        parse(R"("a" = "say \"hi\"\n\ttab \\ \U00e9 \101 \'q\' \UD83D\UDCC4";)");
    EXPECT_FALSE(file.damaged);
    EXPECT_EQ(file.texts.at("a"), "say \"hi\"\n\ttab \\ é A 'q' 📄");
}

TEST(StringsFile, JoinsLinesAtABackslash) {
    EXPECT_EQ(parse("\"a\" = \"one \\\ntwo\";").texts.at("a"), "one two");
}

TEST(StringsFile, KeepsCommentMarksInsideTexts) {
    EXPECT_EQ(parse("\"a\" = \"http://x /* y */\";").texts.at("a"), "http://x /* y */");
}

TEST(StringsFile, TakesTheLastOfRepeatedKeys) {
    EXPECT_EQ(parse("\"a\"=\"1\";\"a\"=\"2\";").texts.at("a"), "2");
}

TEST(StringsFile, SkipsAUtf8Mark) {
    const StringsFile file = parse("\xEF\xBB\xBF\"a\" = \"ä\";");
    EXPECT_FALSE(file.damaged);
    EXPECT_EQ(file.texts.at("a"), "ä");
}

TEST(StringsFile, ReadsUtf16OfEitherByteOrder) {
    // "é"="日"; and a character beyond the basic plane
    const std::string little = "\xFF\xFE\"\0\xE9\0\"\0=\0\"\0\xE5\x65\x3D\xD8\xC4\xDC\"\0;\0"s;
    const std::string big = "\xFE\xFF\0\"\0\xE9\0\"\0=\0\"\x65\xE5\xD8\x3D\xDC\xC4\0\"\0;"s;
    for (const std::string& bytes : {little, big}) {
        const StringsFile file = parse(bytes);
        EXPECT_FALSE(file.damaged);
        EXPECT_THAT(file.texts, UnorderedElementsAre(Pair("é", "日📄")));
    }
}

TEST(StringsFile, IsEmptyAndWholeWithoutEntries) {
    for (const char* text : {"", "\n \t", "// only a comment", "/* and another */"}) {
        EXPECT_FALSE(parse(text).damaged) << text;
        EXPECT_THAT(parse(text).texts, IsEmpty()) << text;
    }
}

// Each ends somewhere in the second entry; the first is kept.
class DamagedStringsFile : public testing::TestWithParam<std::string> {};

TEST_P(DamagedStringsFile, KeepsTheTextsBeforeTheDamage) {
    const StringsFile file = parse("\"first\" = \"1\";\n" + GetParam() + "\n\"third\" = \"3\";");
    EXPECT_TRUE(file.damaged);
    EXPECT_THAT(file.texts, testing::Contains(Pair("first", "1")));
    EXPECT_THAT(file.texts, testing::Not(testing::Contains(Pair("second", "2"))));
    EXPECT_GE(file.damagedLine, 2u);
}

INSTANTIATE_TEST_SUITE_P(Syntax,
                         DamagedStringsFile,
                         testing::Values("\"second\" = \"2\"",
                                         "\"second\" \"2\";",
                                         "\"second = \"2\";",
                                         "\"second\" = ;",
                                         "= \"2\";",
                                         "\"second\" == \"2\";",
                                         "{",
                                         "/* open",
                                         "\"a\" = \"\\UD83D\";",
                                         "\"a\" = \"\\UDC00\";",
                                         "\"a\" = \"\\U12\";",
                                         "\"a\" = \"\\U0000\";",
                                         "\"a\" = \"\\0\";",
                                         "\"a\" = \"zero\0\";"s));
INSTANTIATE_TEST_SUITE_P(Encoding,
                         DamagedStringsFile,
                         testing::Values("\"a\" = \"\xFF\";",
                                         "\"a\" = \"\xC0\x80\";",     // overlong
                                         "\"a\" = \"\xED\xA0\x80\";", // half a pair
                                         "\"a\" = \"\xF4\x90\x80\x80\";",
                                         "\"a\" = \"\xE3\x81\";"));

TEST(StringsFile, KeepsWhatComesBeforeHalfAUtf16Character) {
    const std::string whole = "\xFF\xFE\"\0a\0\"\0=\0\"\0b\0\"\0;\0"s;
    for (const std::string& tail : {"\"\0x"s, "\"\0\x3D\xD8"s, "\"\0\xC4\xDC\"\0"s}) {
        const StringsFile file = parse(whole + tail);
        EXPECT_TRUE(file.damaged);
        EXPECT_THAT(file.texts, UnorderedElementsAre(Pair("a", "b")));
    }
}

TEST(StringsFile, NeverReadsPastAnyCutOfItsBytes) {
    const std::string text =
        "\"key\" = \"a\\n\\101\\U00e9 ü \\UD83D\\UDCC4\"; /* c */ // d\nbare = x;";
    for (size_t length = 0; length <= text.size(); ++length) {
        const std::vector<uint8_t> bytes(text.begin(), text.begin() + static_cast<long>(length));
        EXPECT_LE(parseStringsFile(bytes).texts.size(), 2u);
    }
}

} // namespace
} // namespace paperline
