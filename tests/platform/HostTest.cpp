#include "platform/host/Host.h"

#include "platform/host/LocaleNames.h"
#include "tests/support/FileTesting.h"

#include <gmock/gmock.h>

namespace paperline {
namespace {

using testing::ElementsAre;
using testing_support::TestEnvironment;
using testing_support::TestFolder;

std::vector<std::string> languagesOf(const std::string& lang) {
    return preferredLanguagesOf({"", "", "", lang});
}

TEST(LocaleNames, BecomeLanguageTags) {
    EXPECT_THAT(languagesOf("de_DE.UTF-8@euro"), ElementsAre("de-DE"));
    EXPECT_THAT(languagesOf("de_DE"), ElementsAre("de-DE"));
    EXPECT_THAT(languagesOf("de"), ElementsAre("de"));
    EXPECT_THAT(languagesOf("pt_BR.UTF-8"), ElementsAre("pt-BR"));
    EXPECT_THAT(languagesOf("es_419"), ElementsAre("es-419"));
    EXPECT_THAT(languagesOf("ast_ES.UTF-8"), ElementsAre("ast-ES"));
}

TEST(LocaleNames, TellTheScriptsOfChinese) {
    EXPECT_THAT(languagesOf("zh_TW.UTF-8"), ElementsAre("zh-Hant-TW"));
    EXPECT_THAT(languagesOf("zh_HK"), ElementsAre("zh-Hant-HK"));
    EXPECT_THAT(languagesOf("zh_CN.GB18030"), ElementsAre("zh-Hans-CN"));
    EXPECT_THAT(languagesOf("zh_SG"), ElementsAre("zh-Hans-SG"));
    EXPECT_THAT(languagesOf("zh"), ElementsAre("zh-Hans"));
    EXPECT_THAT(languagesOf("zh_Hant_CN"), ElementsAre("zh-Hant-CN"));
}

TEST(LocaleNames, KnowOneNorwegian) {
    EXPECT_THAT(languagesOf("nb_NO.UTF-8"), ElementsAre("no-NO"));
    EXPECT_THAT(languagesOf("nn"), ElementsAre("no"));
    EXPECT_EQ(localeIdentifierOf({"", "", "", "nb_NO.UTF-8"}), "no_NO");
}

TEST(LocaleNames, AreEnglishWithoutALocale) {
    for (const char* name : {"", "C", "POSIX", "C.UTF-8", "x", "$(ls)", "../../etc", "12_34"})
        EXPECT_THAT(languagesOf(name), ElementsAre("en-US")) << name;
    for (const char* name : {"", "C", "POSIX", "C.UTF-8"})
        EXPECT_EQ(localeIdentifierOf({"", "", "", name}), "en_US") << name;
}

TEST(LocaleNames, AreTakenInTheUsersOrder) {
    EXPECT_THAT(preferredLanguagesOf({"de:en_GB:de", "", "", "fr_FR"}),
                ElementsAre("de", "en-GB", "fr-FR"));
    EXPECT_THAT(preferredLanguagesOf({"", "it_IT", "fr_FR", "de_DE"}), ElementsAre("it-IT"));
    EXPECT_THAT(preferredLanguagesOf({"", "", "fr_FR", "de_DE"}), ElementsAre("fr-FR"));
    EXPECT_THAT(preferredLanguagesOf({"::", "C", "fr_FR", "de_DE"}), ElementsAre("en-US"));
    EXPECT_EQ(localeIdentifierOf({"de", "it_IT.UTF-8", "fr_FR", "de_DE"}), "it_IT");
    EXPECT_EQ(localeIdentifierOf({"de", "", "fr_FR", "de_DE"}), "fr_FR");
    EXPECT_EQ(localeIdentifierOf({"de", "", "", "zh_TW"}), "zh_TW");
    EXPECT_EQ(localeIdentifierOf({"", "", "", "de"}), "de");
}

SystemVersion version(const std::string& text) {
    return parseSystemVersion(text);
}

bool operator==(const SystemVersion& a, const std::array<int, 3>& b) {
    return a.majorNumber == b[0] && a.minorNumber == b[1] && a.bugFix == b[2];
}

TEST(ReleaseFile, GivesTheVersion) {
    using Numbers = std::array<int, 3>;
    EXPECT_TRUE(version("NAME=\"Debian\"\nVERSION_ID=\"12\"\n") == Numbers({12, 0, 0}));
    EXPECT_TRUE(version("VERSION_ID=22.04\n") == Numbers({22, 4, 0}));
    EXPECT_TRUE(version("VERSION_ID='15.6.1'  \r\nID=x") == Numbers({15, 6, 1}));
    EXPECT_TRUE(version("PREVERSION_ID=9\nID=arch\n") == Numbers({0, 0, 0}));
    EXPECT_TRUE(version("VERSION_ID=rolling") == Numbers({0, 0, 0}));
    EXPECT_TRUE(version("VERSION_ID=-3.99999999999999999999") == Numbers({0, 2147483647, 0}));
    EXPECT_TRUE(version("") == Numbers({0, 0, 0}));
}

TEST(RealHost, AnswersFromTheMachine) {
    const Host host = realHost();
    EXPECT_GT(host.secondsSinceEpoch(), 1.6e9);
    EXPECT_FALSE(host.loginName().empty());
    EXPECT_FALSE(host.preferredLanguages().empty());
    ASSERT_TRUE(host.availableMemoryBytes().has_value());
    EXPECT_GT(*host.availableMemoryBytes(), 1U << 20U);
    const TestFolder folder;
    ASSERT_TRUE(host.freeSpaceBytes(folder.path()).has_value());
    EXPECT_GT(*host.freeSpaceBytes(folder.path()), 0);
    EXPECT_FALSE(host.freeSpaceBytes(folder / "missing").has_value());
}

TEST(RealHost, KnowsAFullFileSystem) {
    const testing_support::SmallDisk disk(64);
    const Host host = realHost();
    const auto before = host.freeSpaceBytes(disk.path());
    ASSERT_TRUE(before.has_value());
    ASSERT_TRUE(testing_support::put(disk / "file", std::string(32 * 1024, 'x')));
    EXPECT_LE(*host.freeSpaceBytes(disk.path()), *before);
}

TEST(RealHost, TakesTheHomeFolderFromTheEnvironmentFirst) {
    TestEnvironment environment;
    environment.set("HOME", "/somewhere/home//");
    EXPECT_EQ(realHost().homeFolder(), "/somewhere/home");
    for (const std::optional<std::string>& useless :
         {std::optional<std::string>("relative"), std::optional<std::string>()}) {
        environment.set("HOME", useless);
        EXPECT_TRUE(realHost().homeFolder().starts_with('/'));
    }
}

TEST(RealHost, CanBeReplacedMemberByMember) {
    host().loginName = [] { return std::string("ada"); };
    EXPECT_EQ(host().loginName(), "ada");
    host() = realHost();
    EXPECT_NE(host().loginName(), "");
}

} // namespace
} // namespace paperline
