#include "SessionFixture.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace paperline::test {
namespace {

class SourceLanguageTest : public SessionFixture {
protected:
    SourceLanguageTest() {
        bundle = folder + "/Scanner.ds";
        controller->dsDatas = {{"Scanner.ds", bundle, "Corvane", "Scanner"}};
        controller->currentDSIndex = 0;
        EXPECT_TRUE(createFolderWithParents(bundle + "/Versions/A"));
    }
    std::string file() const { return bundle + "/Versions/A/cvscan.plist"; }
    void writePlist(const std::string& content) {
        writeTextFile(file(),
                      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" +
                          content + "</dict></plist>");
    }
    std::optional<int64_t> storedLanguage() const {
        const PropertyListDictionary root = readPropertyList(file()).root;
        const PropertyListValue* profile = find(root, "Default");
        if (profile == nullptr || profile->asDictionary() == nullptr)
            return std::nullopt;
        const PropertyListValue* language = find(*profile->asDictionary(), "Language");
        return language != nullptr ? language->asInteger() : std::nullopt;
    }
    std::string bundle;
};

TEST_F(SourceLanguageTest, GivesASourceWithoutAFileTheInterfaceLanguage) {
    controller->profileLanguage = 5;
    controller->dsOldLanguage = 9;
    controller->ReadWriteDSLanguageSetting(1, true);
    EXPECT_EQ(storedLanguage(), 5);
    EXPECT_EQ(controller->dsOldLanguage, 0);
    controller->ReadWriteDSLanguageSetting(2, true); // at exit: English
    EXPECT_EQ(storedLanguage(), 0);
}

TEST_F(SourceLanguageTest, KeepsTheRememberedLanguageWhenAskedToWriteAMissingFile) {
    controller->profileLanguage = 5;
    controller->dsOldLanguage = 9;
    controller->ReadWriteDSLanguageSetting(2, false);
    EXPECT_EQ(storedLanguage(), 5);
    EXPECT_EQ(controller->dsOldLanguage, 9);
}

TEST_F(SourceLanguageTest, RemembersReplacesAndRestoresTheSourcesLanguage) {
    writePlist("<key>Default</key><dict><key>Language</key><integer>3</integer></dict>");
    controller->profileLanguage = 5;
    controller->ReadWriteDSLanguageSetting(1, true);
    EXPECT_EQ(controller->dsOldLanguage, 3);
    EXPECT_EQ(controller->profileLanguage, 5);
    EXPECT_EQ(storedLanguage(), 3);
    controller->ReadWriteDSLanguageSetting(2, false);
    EXPECT_EQ(storedLanguage(), 5);
    controller->ReadWriteDSLanguageSetting(2, true);
    EXPECT_EQ(storedLanguage(), 3);
}

TEST_F(SourceLanguageTest, WritesTheLanguageWhereTheProfileHasNone) {
    writePlist("<key>Default</key><dict><key>Dpi</key><integer>300</integer></dict>");
    controller->profileLanguage = 5;
    controller->ReadWriteDSLanguageSetting(1, true);
    EXPECT_EQ(controller->dsOldLanguage, 0);
    controller->ReadWriteDSLanguageSetting(2, false);
    EXPECT_EQ(storedLanguage(), 5);
    controller->ReadWriteDSLanguageSetting(2, true);
    EXPECT_EQ(storedLanguage(), 0);
}

TEST_F(SourceLanguageTest, KeepsOtherKeysAtBothLevels) {
    writePlist("<key>Default</key><dict><key>Dpi</key><integer>300</integer>"
               "<key>Language</key><integer>3</integer></dict>"
               "<key>Other</key><string>stays</string>");
    controller->profileLanguage = 5;
    for (int round = 0; round < 3; ++round)
        controller->ReadWriteDSLanguageSetting(2, false);
    const PropertyListDictionary root = readPropertyList(file()).root;
    EXPECT_EQ(*find(root, "Other")->asString(), "stays");
    EXPECT_EQ(find(*find(root, "Default")->asDictionary(), "Dpi")->asInteger(), 300);
    EXPECT_EQ(storedLanguage(), 5);
}

TEST_F(SourceLanguageTest, LeavesFilesWithoutAProfileAlone) {
    for (const char* content : {"", "<key>Default</key><string>text</string>"}) {
        writePlist(content);
        const auto before = readFile(file());
        controller->dsOldLanguage = 9;
        controller->ReadWriteDSLanguageSetting(1, true);
        controller->ReadWriteDSLanguageSetting(2, false);
        EXPECT_EQ(readFile(file()), before) << content;
        EXPECT_EQ(controller->dsOldLanguage, 9);
    }
}

TEST_F(SourceLanguageTest, LeavesADamagedFileAlone) {
    writeTextFile(file(), "no property list");
    const auto before = readFile(file());
    controller->ReadWriteDSLanguageSetting(2, false);
    controller->ReadWriteDSLanguageSetting(1, true);
    EXPECT_EQ(readFile(file()), before);
}

TEST_F(SourceLanguageTest, TakesTheSourcesLanguageAfterItsDialog) {
    writePlist("<key>Default</key><dict><key>Language</key><integer>11</integer></dict>");
    controller->supportedLanguage = "00,01,02,04,05,06,07,08,11,12,25";
    controller->ReadWriteDSLanguageSetting(1, false);
    EXPECT_EQ(controller->currentLanguage, 11);
    EXPECT_EQ(controller->profileLanguage, 11);
    EXPECT_EQ(controller->supportLanguageProfileLanguage, 8);
    EXPECT_EQ(controller->dsOldLanguage, 0);
}

TEST_F(SourceLanguageTest, SkipsASourceWithoutABundle) {
    controller->hasSourceBundle = false;
    controller->ReadWriteDSLanguageSetting(2, false);
    EXPECT_FALSE(fileExists(file()));
    controller->hasSourceBundle = true;
    for (int32_t index : {1, 1000, -1}) {
        controller->dsDatas.resize(index == -1 ? 0 : 1);
        controller->currentDSIndex = index;
        controller->ReadWriteDSLanguageSetting(2, false);
        EXPECT_FALSE(fileExists(file())) << index;
    }
}

TEST_F(SourceLanguageTest, ReadsButNeverWritesOnTheCommandLine) {
    AppDelegate commandLine({.brand = 7, .commandLine = true, .sourceName = {}});
    commandLine.dsDatas = controller->dsDatas;
    commandLine.profileLanguage = 5;
    commandLine.dsOldLanguage = 9;
    commandLine.ReadWriteDSLanguageSetting(1, true);
    EXPECT_FALSE(fileExists(file()));
    EXPECT_EQ(commandLine.dsOldLanguage, 0);
    writePlist("<key>Default</key><dict><key>Language</key><integer>3</integer></dict>");
    commandLine.ReadWriteDSLanguageSetting(1, true);
    EXPECT_EQ(commandLine.dsOldLanguage, 3);
    commandLine.ReadWriteDSLanguageSetting(2, false);
    EXPECT_EQ(storedLanguage(), 3);
}

TEST_F(SourceLanguageTest, KeepsSilentAboutABundleThatCannotBeWritten) {
    controller->dsDatas[0].dsPath = folder + "/Gone.ds";
    controller->ReadWriteDSLanguageSetting(2, false);
    EXPECT_FALSE(fileExists(folder + "/Gone.ds"));
    EXPECT_TRUE(alerts.empty());
}

} // namespace
} // namespace paperline::test
