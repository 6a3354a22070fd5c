#include "sources/framework/SourceLanguage.h"

#include "tests/sources/framework/SourceFixture.h"
#include "tests/support/TestFolder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace paperline::sources {
namespace {

using namespace twain;

constexpr int32_t swedish = 24;
constexpr int32_t turkish = 25;

std::string plist(const std::string& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//X//Y\" \"z\">\n"
           "<plist version=\"1.0\">\n<dict>\n" +
           entries + "</dict>\n</plist>\n";
}

int32_t languageIn(std::string_view text) {
    return languageOfPropertyList({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

std::string profile(const std::string& entries) {
    return "\t<key>Default</key>\n\t<dict>\n" + entries + "\t</dict>\n";
}

const std::string swedishEntry = "\t\t<key>Language</key>\n\t\t<integer>24</integer>\n";

TEST(LanguageOfPropertyList, IsTheDefaultProfilesEntry) {
    EXPECT_EQ(languageIn(plist(profile(swedishEntry))), swedish);
    EXPECT_EQ(languageIn(plist(profile("<key>Dpi</key><integer>300</integer>" + swedishEntry))),
              swedish);
    EXPECT_EQ(languageIn(plist(profile("<key>Language</key> <integer>\n 7 </integer>"))), 7);
}

TEST(LanguageOfPropertyList, IsNotTheOneOfAnotherContainer) {
    const std::string other = "<key>Language</key><integer>5</integer>";
    EXPECT_EQ(languageIn(plist(other)), 0);
    EXPECT_EQ(languageIn(plist("<key>Other</key><dict>" + other + "</dict>")), 0);
    EXPECT_EQ(languageIn(plist(profile("<key>Inner</key><dict>" + other + "</dict>"))), 0);
    EXPECT_EQ(languageIn(plist(profile("<key>Inner</key><array><dict>" + other + "</dict></array>" +
                                       swedishEntry))),
              swedish);
    EXPECT_EQ(languageIn(plist(profile("") + other)), 0);
    EXPECT_EQ(languageIn(plist("<!-- <key>Default</key><dict>" + other + " -->")), 0);
}

TEST(LanguageOfPropertyList, IsEnglishForDamage) {
    for (const char* text : {"",
                             "<",
                             "<!--",
                             "bplist00",
                             "</dict></dict><dict>",
                             "<dict><key>Default</key><dict><key>Language</key><integer>",
                             "<dict><key>Default</key><dict><key>Language</key><integer>many",
                             "<dict><key>Default</key><dict><key>Language</key><integer>"
                             "99999999999999999999</integer>"})
        EXPECT_EQ(languageIn(text), 0) << text;
}

TEST(LocalizedConditionText, LeavesEnglishAndUnknownLanguagesToTheSource) {
    for (const int32_t language : {-1, 0, 27, 1000})
        EXPECT_EQ(localizedConditionText(language, TWCC_PAPERJAM), nullptr) << language;
    EXPECT_EQ(localizedConditionText(turkish, TWCC_SEQERROR), nullptr);
}

TEST(LocalizedConditionText, IsTheApplicationsSentence) {
    EXPECT_STREQ(localizedConditionText(turkish, TWCC_NOMEDIA), "Tarayıcıda kâğıt yok.");
    EXPECT_STREQ(localizedConditionText(swedish, TWCC_MAXCONNECTIONS),
                 "Skannern används av ett annat program.");
    EXPECT_STREQ(localizedConditionText(26, TWCC_NOMEDIA), "لا يوجد ورق في الماسح الضوئي.");
}

class SourceLanguage : public SourceFixture {
protected:
    SourceLanguage() {
        std::filesystem::create_directories(bundle + "/Versions/A");
        SourceConfiguration configuration;
        configuration.bundlePath = bundle;
        configuration.product = "Test Scanner";
        auto owned = std::make_unique<ScriptedFeed>();
        feed = owned.get();
        feed->startStatus = ScanStatus::paperJam;
        feed->text = "Sheet 7 is askew";
        source = std::make_unique<DataSource>(configuration, std::move(owned));
    }
    void setLanguage(int32_t language) const {
        std::ofstream(bundle + "/Versions/A/cvscan.plist") << plist(
            profile("<key>Language</key><integer>" + std::to_string(language) + "</integer>"));
    }
    std::string statusText() {
        abi::StatusUtf8 status{};
        EXPECT_EQ(control(DAT_STATUSUTF8, MSG_GET, &status), TWRC_SUCCESS);
        std::string text = static_cast<const char*>(ScriptedManager::lock(status.UTF8string));
        EXPECT_EQ(text.size() + 1, +status.Size);
        ScriptedManager::release(status.UTF8string);
        return text;
    }
    const testing_support::TestFolder temporary;
    const std::string bundle = temporary.path();
};

TEST_F(SourceLanguage, FollowsTheBundlesFileWhileTheSourceIsOpen) {
    giveEntryPoint();
    ASSERT_EQ(open(), TWRC_SUCCESS);
    EXPECT_EQ(enable(), TWRC_FAILURE);
    EXPECT_EQ(statusText(), "Sheet 7 is askew");
    setLanguage(swedish);
    EXPECT_EQ(statusText(),
              "Papper har fastnat i skannern. Ta bort det och skanna de återstående sidorna igen.");
    // Reading the condition does not change what was the matter.
    EXPECT_EQ(condition(), TWCC_PAPERJAM);
    setLanguage(turkish);
    EXPECT_EQ(statusText(),
              "Tarayıcıda kâğıt sıkıştı. Sıkışan kâğıdı çıkarıp kalan sayfaları yeniden tarayın.");
    setLanguage(0);
    EXPECT_EQ(statusText(), "Sheet 7 is askew");
}

TEST_F(SourceLanguage, LeavesTheSourcesOwnWordsWhereTheLanguageHasNone) {
    giveEntryPoint();
    setLanguage(turkish);
    EXPECT_EQ(close(), TWRC_FAILURE);
    EXPECT_EQ(statusText(), "The request came at the wrong time");
}

} // namespace
} // namespace paperline::sources
