#include "app/SettingsFile.h"

#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace paperline {
namespace {

// A bundle with two languages; a user who prefers German and has no settings of their own.
class SettingsFileTest : public testing::Test {
protected:
    SettingsFileTest() {
        setenv("XDG_DATA_HOME", (root_ + "/data").c_str(), 1);
        host().preferredLanguages = [this] { return preferred_; };
        EXPECT_TRUE(createFolderWithParents(bundle_ + "/Contents/MACOS"));
        writeTexts("de.lproj", "Scanner werden gesucht");
        writeTexts("ja.lproj", "検索中");
    }
    ~SettingsFileTest() override {
        host() = realHost();
        unsetenv("XDG_DATA_HOME");
    }
    void writeTexts(const std::string& language, const std::string& text) const {
        const std::string folder = bundle_ + "/Contents/Resources/" + language;
        EXPECT_TRUE(createFolderWithParents(folder));
        std::ofstream(folder + "/Localizable.strings") << "\"Look\" = \"" << text << "\";\n";
    }
    void writeSettings(const PropertyListDictionary& root) const {
        EXPECT_TRUE(
            writePropertyListAtomically(bundle_ + "/Contents/MACOS/CvPaperline_lng.plist", root));
    }

    const testing_support::TestFolder testFolder_;
    const std::string& root_ = testFolder_.path();
    std::string bundle_ = root_ + "/Paperline.app";
    std::vector<std::string> preferred_{"de-DE", "ja-JP"};
};

TEST_F(SettingsFileTest, SpeakTheSystemsLanguageBeforeTheFirstSettings) {
    EXPECT_EQ(launchLanguage(bundle_, 7), 5);
    EXPECT_EQ(launchText(bundle_, 7, "Look"), "Scanner werden gesucht");
}

TEST_F(SettingsFileTest, SpeakTheLanguageOfTheSettings) {
    writeSettings({{"Language", PropertyListValue(int64_t{3})}});
    EXPECT_EQ(launchText(bundle_, 7, "Look"), "検索中");
}

TEST_F(SettingsFileTest, AreEnglishForSettingsBeyondTheTable) {
    writeSettings({{"Language", PropertyListValue(int64_t{27})}});
    EXPECT_EQ(launchLanguage(bundle_, 7), 0);
    writeSettings({{"ScannerName", PropertyListValue(std::string("Scan One"))}});
    EXPECT_EQ(launchLanguage(bundle_, 7), 0);
}

TEST_F(SettingsFileTest, AreEnglishWhereTheBrandDoesNotOfferTheSystemsLanguage) {
    preferred_ = {"ja-JP"};
    EXPECT_EQ(launchLanguage(bundle_, 7), 3);
    EXPECT_EQ(launchLanguage(bundle_, 2), 0);
    preferred_ = {};
    EXPECT_EQ(launchLanguage(bundle_, 7), 0);
}

TEST_F(SettingsFileTest, AreTheKeyWhereTheLanguageHasNone) {
    EXPECT_EQ(launchText(bundle_, 7, "Unknown"), "Unknown");
    writeSettings({{"Language", PropertyListValue(int64_t{6})}});
    EXPECT_EQ(launchText(bundle_, 7, "Look"), "Look");
}

} // namespace
} // namespace paperline
