#include "ui/LanguageTable.h"

#include <gmock/gmock.h>

#include <set>

namespace paperline {
namespace {

using testing::ElementsAre;

constexpr const char* brandTwoList = "00,01,02,04,05,06,07,08,11,12,25";

int32_t detected(const char* preferred) {
    return languageOfPreference(withoutRegion(preferred));
}

TEST(LanguageTable, HasTheRowsInOrder) {
    ASSERT_EQ(languageTable.size(), 27u);
    EXPECT_STREQ(languageTable[0].resourceFolder, "en.lproj");
    EXPECT_STREQ(languageTable[1].menuName, "繁體中文");
    EXPECT_STREQ(languageTable[10].resourceFolder, "pt-BR.lproj");
    EXPECT_STREQ(languageTable[10].systemCode, "br");
    EXPECT_STREQ(languageTable[12].menuName, "Portuguese");
    EXPECT_STREQ(languageTable[15].resourceFolder, "da-DK.lproj");
    EXPECT_STREQ(languageTable[18].menuName, "French Canada");
    EXPECT_STREQ(languageTable[21].localeIdentifier, "no_NO");
    EXPECT_STREQ(languageTable[26].localeIdentifier, "ar_AE");
}

TEST(LanguageTable, NamesNoFolderOrMenuEntryTwice) {
    std::set<std::string> folders, names;
    for (const LanguageRow& row : languageTable) {
        EXPECT_TRUE(folders.insert(row.resourceFolder).second) << row.resourceFolder;
        EXPECT_TRUE(names.insert(row.menuName).second) << row.menuName;
    }
}

TEST(LanguageTable, KeepsIndexesOfTheTableAndTurnsOthersIntoEnglish) {
    EXPECT_EQ(languageInTable(26), 26);
    EXPECT_EQ(languageInTable(27), languageEnglish);
    EXPECT_EQ(languageInTable(-1), languageEnglish);
}

TEST(LanguageOfLocale, MatchesEveryLocaleExactly) {
    for (int32_t language = 0; language < 27; ++language)
        EXPECT_EQ(languageOfLocale(languageTable[static_cast<size_t>(language)].localeIdentifier),
                  language);
}

TEST(LanguageOfLocale, GivesEnglishForAnythingElse) {
    EXPECT_EQ(languageOfLocale("de_AT"), 0);
    EXPECT_EQ(languageOfLocale("DE_DE"), 0);
    EXPECT_EQ(languageOfLocale("de"), 0);
    EXPECT_EQ(languageOfLocale(""), 0);
}

TEST(WithoutRegion, DropsTheLastOfTwoOrThreeParts) {
    EXPECT_EQ(withoutRegion("pt-BR"), "pt");
    EXPECT_EQ(withoutRegion("zh-Hant-TW"), "zh-Hant");
    EXPECT_EQ(withoutRegion("zh-Hans"), "zh"); // two parts: the script goes too
    EXPECT_EQ(withoutRegion("de"), "de");
    EXPECT_EQ(withoutRegion("zh-Hant-TW-x"), "zh-Hant-TW-x");
    EXPECT_EQ(withoutRegion(""), "");
}

TEST(LanguageOfPreference, FindsEachCodeOfTheTable) {
    const std::vector<std::pair<const char*, int32_t>> expected{
        {"en", 0},  {"zh-Hant", 1}, {"zh", 2},  {"ja", 3},  {"ko", 4},  {"de", 5},  {"fr", 6},
        {"es", 7},  {"it", 8},      {"cs", 9},  {"br", 10}, {"ru", 11}, {"pt", 12}, {"pl", 13},
        {"bg", 14}, {"dk", 15},     {"nl", 16}, {"fi", 17}, {"el", 19}, {"hu", 20}, {"no", 21},
        {"ro", 22}, {"sk", 23},     {"sv", 24}, {"tr", 25}, {"ar", 26}};
    for (const auto& [code, language] : expected)
        EXPECT_EQ(languageOfPreference(code), language) << code;
}

TEST(LanguageOfPreference, LooksAtTwoLettersWhateverTheirCase) {
    EXPECT_EQ(languageOfPreference("DE"), 5);
    EXPECT_EQ(languageOfPreference("jA"), 3);
    EXPECT_EQ(languageOfPreference("deutsch"), 5);
}

TEST(LanguageOfPreference, GivesEnglishForAnUnknownLanguage) {
    EXPECT_EQ(languageOfPreference("xx"), 0);
    EXPECT_EQ(languageOfPreference("d"), 0);
    EXPECT_EQ(languageOfPreference(""), 0);
    EXPECT_EQ(languageOfPreference("da"), 0); // Danish is looked for as "dk"
}

TEST(LanguageOfPreference, ReachesPortugueseNotItsBrazilianFormFromABrazilianSystem) {
    EXPECT_EQ(detected("pt-BR"), 12);
}

TEST(LanguageOfPreference, TellsTheTwoChineseScriptsApart) {
    EXPECT_EQ(detected("zh-Hant-TW"), 1);
    EXPECT_EQ(detected("zh-Hans-CN"), 2);
    EXPECT_EQ(detected("zh-Hans"), 2);
    EXPECT_EQ(detected("ZH-hant-TW"), 2); // the script's name is compared exactly
}

TEST(LanguageOfPreference, NeverGivesCanadianFrench) {
    EXPECT_EQ(detected("fr-CA"), 6);
}

TEST(OfferedLanguages, AreAllWithoutAList) {
    EXPECT_EQ(offeredLanguages("").size(), 27u);
    EXPECT_TRUE(isLanguageOffered("", 18));
}

TEST(OfferedLanguages, AreThoseOfTheBrandsList) {
    EXPECT_THAT(offeredLanguages(brandTwoList), ElementsAre(0, 1, 2, 4, 5, 6, 7, 8, 11, 12, 25));
    EXPECT_FALSE(isLanguageOffered(brandTwoList, 3));
}

TEST(LanguageMenuPosition, CountsTheEntriesBeforeIt) {
    EXPECT_EQ(languageMenuPosition(brandTwoList, 0), 0);
    EXPECT_EQ(languageMenuPosition(brandTwoList, 4), 3);
    EXPECT_EQ(languageMenuPosition(brandTwoList, 11), 8);
    EXPECT_EQ(languageMenuPosition(brandTwoList, 25), 10);
}

TEST(LanguageMenuPosition, IsNothingOutsideTheListOrWithoutOne) {
    EXPECT_EQ(languageMenuPosition(brandTwoList, 3), std::nullopt);
    EXPECT_EQ(languageMenuPosition("", 3), std::nullopt);
}

} // namespace
} // namespace paperline
