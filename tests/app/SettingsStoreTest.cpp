#include "base/BrandProfile.h"
#include "controller/AppDelegate.h"
#include "platform/desktop/Alert.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "tests/support/Brands.h"
#include "tests/support/TestFolder.h"
#include "ui/SaveFolderTextField.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string_view>

using namespace paperline;

namespace {

// A bundle of the test's own, a user named "ada" whose home is /home/ada, a scanner named "Scan
// One".
class SettingsStoreTest : public testing::Test {
protected:
    SettingsStoreTest() {
        setBundlePath(bundle_);
        EXPECT_TRUE(createFolderWithParents(bundle_ + "/Contents/MACOS"));
        host().loginName = [this] { return user_; };
        host().homeFolder = [] { return std::string("/home/ada"); };
        host().preferredLanguages = [] { return std::vector<std::string>{"de-DE"}; };
        controller_ = make(7);
    }
    ~SettingsStoreTest() override {
        removePath(userDataFolder());
        setBundlePath({});
        host() = realHost();
    }

    std::unique_ptr<AppDelegate> make(uint32_t brand) {
        gBrandNumber = brand;
        auto controller = std::make_unique<AppDelegate>(
            LaunchOptions{.brand = brand, .commandLine = false, .sourceName = {}});
        controller->loadInterface();
        controller->mCurrentPath = bundle_;
        controller->mResourcePath = bundle_ + "/Contents/Resources";
        controller->currentProductName = "Scan One";
        controller->getSystemInfo();
        return controller;
    }
    void write(const PropertyListDictionary& root) {
        ASSERT_TRUE(writePropertyListAtomically(file_, root));
    }
    PropertyListDictionary written() const { return readPropertyList(file_).root; }
    static PropertyListDictionary
    profile(std::string path, int64_t format, int64_t language, int64_t show) {
        return {{"SavePath", PropertyListValue(std::move(path))},
                {"FileFormat", PropertyListValue(format)},
                {"Language", PropertyListValue(language)},
                {"ShowInFinder", PropertyListValue(show)}};
    }
    static const PropertyListDictionary& profileIn(const PropertyListDictionary& root,
                                                   const std::string& key) {
        return *find(root, key)->asDictionary();
    }

    std::string user_ = "ada";
    const testing_support::TestFolder testFolder_;
    const std::string& root_ = testFolder_.path();
    std::string bundle_ = root_ + "/Paperline.app";
    std::string file_ = bundle_ + "/Contents/MACOS/CvPaperline_lng.plist";
    std::unique_ptr<AppDelegate> controller_;
};

} // namespace

TEST_F(SettingsStoreTest, HasDefaultsWithoutAFile) {
    controller_->scannerName = "old";
    controller_->ReadDefaultScannerName();
    EXPECT_EQ(controller_->scannerName, "");
    controller_->ReadDefaultSaveImageName();
    EXPECT_EQ(controller_->saveImageName, "Image");
    controller_->ReadUISettingForLastLanguage();
    EXPECT_EQ(controller_->profileLanguage, 5); // de
    controller_->profileShowInFinder = 1;
    controller_->ReadUISetting();
    EXPECT_EQ(controller_->profileFolderName, "/Users/kai_morn/Documents/Image");
    EXPECT_EQ(controller_->profileFileformatSelect, 1);
    EXPECT_EQ(controller_->profileShowInFinder, 0);
    EXPECT_EQ(controller_->SelectFolderAutoDetectFlag, 1);
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, "/home/ada/Documents/Image");
    EXPECT_EQ(controller_->currentSaveFolder->text(), "/home/ada/Documents/Image");
}

TEST_F(SettingsStoreTest, StartsWithTheFormatOfTheBrand) {
    for (const uint32_t brand : testing_support::everyBrand) {
        const std::unique_ptr<AppDelegate> controller = make(brand);
        controller->ReadUISetting();
        const bool bmp =
            brand == 2 || brand == 3 || brand == 4 || brand == testing_support::unlistedBrand;
        EXPECT_EQ(controller->profileFileformatSelect, bmp ? 0 : 1) << brand;
    }
}

TEST_F(SettingsStoreTest, FindsTheMenuPositionOfBrandTwoFromTheSystemsLanguage) {
    // The German system gives 5, the fifth of the offered languages from 0; Japanese falls back to
    // English.
    const std::unique_ptr<AppDelegate> controller = make(2);
    controller->ReadUISetting();
    EXPECT_EQ(controller->currentOSLanguage, 5);
    EXPECT_EQ(controller->supportLanguageProfileLanguage, 4);
    host().preferredLanguages = [] { return std::vector<std::string>{"ja-JP"}; };
    controller->ReadUISetting();
    EXPECT_EQ(controller->supportLanguageProfileLanguage, 0);
}

TEST_F(SettingsStoreTest, ReadsRootAndProfile) {
    write({{"ScannerName", "Scan One"},
           {"Language", PropertyListValue(int64_t{8})},
           {"SaveImageName", "Invoice"},
           {"ada/Scan One", PropertyListValue(profile("/data/scans", 5, 11, 1))}});
    controller_->ReadDefaultScannerName();
    EXPECT_EQ(controller_->scannerName, "Scan One");
    controller_->ReadDefaultSaveImageName();
    EXPECT_EQ(controller_->saveImageName, "Invoice");
    controller_->ReadUISettingForLastLanguage();
    EXPECT_EQ(controller_->profileLanguage, 8);
    controller_->ReadUISetting();
    EXPECT_EQ(controller_->profileLanguage, 11); // the profile's own language wins
    EXPECT_EQ(controller_->profileFileformatSelect, 5);
    EXPECT_EQ(controller_->profileShowInFinder, 1);
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, "/data/scans"); // kept though it does not exist
}

TEST_F(SettingsStoreTest, TakesStoredNumbersAsTheyStand) {
    write({{"Language", PropertyListValue(int64_t{77})},
           {"ada/Scan One", PropertyListValue(profile("", 42, -3, 9))}});
    controller_->ReadUISettingForLastLanguage();
    EXPECT_EQ(controller_->profileLanguage, 77);
    controller_->ReadUISetting();
    EXPECT_EQ(controller_->profileFileformatSelect, 42);
    EXPECT_EQ(controller_->profileLanguage, -3);
}

TEST_F(SettingsStoreTest, ReplacesAnEmptyStoredFolder) {
    write({{"ada/Scan One", PropertyListValue(profile("", 1, 0, 0))}});
    controller_->ReadUISetting();
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, "/home/ada/Documents/Image");
}

TEST_F(SettingsStoreTest, ForgetsTheProfileOfTheProductBefore) {
    write({{"ada/Scan One", PropertyListValue(profile("/of/one", 1, 0, 0))}});
    controller_->ReadUISetting();
    EXPECT_TRUE(controller_->dictCurrentFolder);
    controller_->currentProductName = "Scan Two";
    controller_->ReadUISetting();
    EXPECT_FALSE(controller_->dictCurrentFolder);
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, "/home/ada/Documents/Image");
}

TEST_F(SettingsStoreTest, ReplacesAMissingFolderOnlyWithTheFlagClear) {
    write({{"ada/Scan One", PropertyListValue(profile("/nowhere/at/all", 1, 0, 0))}});
    controller_->ReadUISetting();
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, "/nowhere/at/all");
    controller_->SelectFolderAutoDetectFlag = 0;
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, "/home/ada/Documents");
    controller_->dictCurrentFolder->insert_or_assign("SavePath", PropertyListValue(bundle_));
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, bundle_);
    controller_->dictCurrentFolder.reset();
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, "/home/ada/Documents");
}

TEST_F(SettingsStoreTest, ExpandsTheImageNameAtEveryReading) {
    host().secondsSinceEpoch = [] { return 1768560000.0; }; // 16 January 2026
    write({{"SaveImageName", "Letter_%DD"}});
    controller_->ReadDefaultSaveImageName();
    EXPECT_EQ(controller_->saveImageName, "Letter_16");
    removePath(file_);
    controller_->ReadDefaultSaveImageName();
    EXPECT_EQ(controller_->saveImageName, "Image");
}

TEST_F(SettingsStoreTest, ReadsAnEmptyImageNameAsTheDefault) {
    write({{"SaveImageName", ""}});
    controller_->ReadDefaultSaveImageName();
    EXPECT_EQ(controller_->saveImageName, "Image");
}

TEST_F(SettingsStoreTest, ChangesNothingForADamagedFile) {
    const std::string_view text = "<plist><dict><key>Scanner";
    ASSERT_TRUE(writeFile(file_, {reinterpret_cast<const uint8_t*>(text.data()), text.size()}));
    controller_->scannerName = "kept";
    controller_->profileLanguage = 3;
    controller_->profileFileformatSelect = 6;
    controller_->saveImageName = "Letter_%DD_%yyyy";
    host().secondsSinceEpoch = [] { return 1768560000.0; }; // 16 January 2026
    controller_->ReadDefaultScannerName();
    controller_->ReadDefaultSaveImageName();
    controller_->ReadUISettingForLastLanguage();
    controller_->ReadUISetting();
    EXPECT_EQ(controller_->scannerName, "kept");
    EXPECT_EQ(controller_->saveImageName, "Letter_%DD_%yyyy") << "found, but in another case";
    EXPECT_EQ(controller_->profileLanguage, 3);
    EXPECT_EQ(controller_->profileFileformatSelect, 6);
    EXPECT_FALSE(controller_->dictCurrentFolder);
    controller_->currentSaveFolder->setText("/x");
    controller_->writeSettingsAtTermination();
    EXPECT_EQ(*find(written(), "ScannerName")->asString(), "kept"); // replaced by a whole one
}

TEST_F(SettingsStoreTest, SetsADamagedFileAsideBeforeItIsReplaced) {
    const auto damage = [this](std::string_view text) {
        return writeFile(file_, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    };
    const auto textOf = [](const std::string& path) {
        const auto bytes = readFile(path).value_or(std::vector<uint8_t>());
        return std::string(bytes.begin(), bytes.end());
    };
    ASSERT_TRUE(damage("<plist><dict><key>first"));
    controller_->writeSettingsAtTermination();
    ASSERT_TRUE(damage("<plist><dict><key>second"));
    controller_->writeSettingsAtTermination();
    EXPECT_EQ(textOf(file_ + ".damaged"), "<plist><dict><key>first");
    EXPECT_EQ(textOf(file_ + ".damaged 2"), "<plist><dict><key>second");
    EXPECT_TRUE(find(written(), "Language") != nullptr);
    controller_->writeSettingsAtTermination(); // of a whole file nothing is set aside
    EXPECT_FALSE(fileExists(file_ + ".damaged 3"));
}

TEST_F(SettingsStoreTest, WritesWhatIsInForceAndKeepsUnknownKeys) {
    PropertyListDictionary old = profile("/old", 0, 0, 0);
    old["Theme"] = "dark";
    write({{"Future", PropertyListValue(int64_t{4})},
           {"SaveImageName", "Invoice"},
           {"bob/Scan One", PropertyListValue(profile("/bob", 2, 2, 0))},
           {"ada/Scan One", PropertyListValue(std::move(old))}});
    controller_->scannerName = "Scan One";
    controller_->profileLanguage = 7;
    controller_->profileFileformatSelect = 3;
    controller_->profileShowInFinder = 1;
    controller_->currentSaveFolder->setText("/new/folder");
    controller_->writeSettingsAtTermination();
    const PropertyListDictionary root = written();
    EXPECT_EQ(*find(root, "ScannerName")->asString(), "Scan One");
    EXPECT_EQ(find(root, "Language")->asInteger(), 7);
    EXPECT_EQ(find(root, "Future")->asInteger(), 4);
    EXPECT_EQ(*find(root, "SaveImageName")->asString(), "Invoice");
    EXPECT_EQ(*find(profileIn(root, "bob/Scan One"), "SavePath")->asString(), "/bob");
    PropertyListDictionary expected = profile("/new/folder", 3, 7, 1);
    expected["Theme"] = "dark";
    EXPECT_EQ(profileIn(root, "ada/Scan One"), expected);
}

TEST_F(SettingsStoreTest, StoresAFolderThatEndsInASeparatorWithImageAppended) {
    controller_->currentSaveFolder->setText("/data/scans/");
    controller_->writeSettingsAtTermination();
    EXPECT_EQ(*find(profileIn(written(), "ada/Scan One"), "SavePath")->asString(),
              "/data/scans/Image");
    EXPECT_EQ(controller_->profileFolderName, "/data/scans/Image");
}

TEST_F(SettingsStoreTest, StoresAnEmptyFolderAsItStands) {
    controller_->currentSaveFolder->setText("");
    controller_->writeSettingsAtTermination();
    EXPECT_EQ(*find(profileIn(written(), "ada/Scan One"), "SavePath")->asString(), "");
}

TEST_F(SettingsStoreTest, KeepsUsersAndScannersApart) {
    controller_->currentSaveFolder->setText("/ada/one");
    controller_->writeSettingsAtTermination();
    user_ = "bob";
    controller_->currentSaveFolder->setText("/bob/one");
    controller_->writeSettingsAtTermination();
    controller_->currentProductName = "Scan Two";
    controller_->currentSaveFolder->setText("/bob/two");
    controller_->writeSettingsAtTermination();
    const PropertyListDictionary root = written();
    EXPECT_EQ(*find(profileIn(root, "ada/Scan One"), "SavePath")->asString(), "/ada/one");
    EXPECT_EQ(*find(profileIn(root, "bob/Scan One"), "SavePath")->asString(), "/bob/one");
    EXPECT_EQ(*find(profileIn(root, "bob/Scan Two"), "SavePath")->asString(), "/bob/two");
}

TEST_F(SettingsStoreTest, PrefersTheUsersOwnFileOverTheBundles) {
    write({{"ScannerName", "bundle's"}});
    const std::string own = userDataFolder() + "/Contents/MACOS/CvPaperline_lng.plist";
    ASSERT_TRUE(createFolderWithParents(folderOfPath(own)));
    ASSERT_TRUE(writePropertyListAtomically(own, {{"ScannerName", "own"}}));
    controller_->ReadDefaultScannerName();
    EXPECT_EQ(controller_->scannerName, "own");
    controller_->scannerName = "changed";
    controller_->writeSettingsAtTermination();
    EXPECT_EQ(*find(readPropertyList(own).root, "ScannerName")->asString(), "changed");
    EXPECT_EQ(*find(written(), "ScannerName")->asString(), "bundle's");
}

TEST_F(SettingsStoreTest, ReadsARootWithoutKeys) {
    write({{"Future", "kept"}});
    controller_->scannerName = "old";
    controller_->ReadDefaultScannerName();
    EXPECT_EQ(controller_->scannerName, "");
    controller_->ReadDefaultSaveImageName();
    EXPECT_EQ(controller_->saveImageName, "Image");
    controller_->profileLanguage = 3;
    controller_->supportLanguageProfileLanguage = 2;
    controller_->dictCurrentFolder.emplace();
    controller_->ReadUISettingForLastLanguage();
    EXPECT_EQ(controller_->profileLanguage, 3);
    EXPECT_EQ(controller_->supportLanguageProfileLanguage, 2);
    EXPECT_FALSE(controller_->dictCurrentFolder);
}

TEST_F(SettingsStoreTest, ChangesOnlyWhatTheProfileHolds) {
    write({{"ada/Scan One", PropertyListValue(PropertyListDictionary{{"Theme", "dark"}})}});
    controller_->profileFolderName = "/old";
    controller_->profileFileformatSelect = 6;
    controller_->profileLanguage = 3;
    controller_->profileShowInFinder = 1;
    controller_->ReadUISetting();
    EXPECT_TRUE(controller_->dictCurrentFolder);
    EXPECT_EQ(controller_->profileFolderName, ""); // none is stored
    EXPECT_EQ(controller_->profileFileformatSelect, 6);
    EXPECT_EQ(controller_->profileLanguage, 3);
    EXPECT_EQ(controller_->profileShowInFinder, 1);
}

TEST_F(SettingsStoreTest, KeepsFieldsOfAScannerWithoutAProfile) {
    write({{"ada/Scan Two", PropertyListValue(profile("/two", 5, 11, 1))}});
    controller_->profileFileformatSelect = 6;
    controller_->profileLanguage = 3;
    controller_->ReadUISetting();
    EXPECT_FALSE(controller_->dictCurrentFolder);
    EXPECT_EQ(controller_->profileFileformatSelect, 6);
    EXPECT_EQ(controller_->profileLanguage, 3);
    controller_->fixUpSaveFolder();
    EXPECT_EQ(controller_->profileFolderName, "/home/ada/Documents/Image");
}

TEST_F(SettingsStoreTest, FindsTheMenuPositionOfAStoredLanguage) {
    const std::unique_ptr<AppDelegate> controller = make(2); // offers 0, 1, 2, 4, 5, 6, 7, ...
    write({{"Language", PropertyListValue(int64_t{5})},
           {"ada/Scan One", PropertyListValue(profile("", 0, 25, 0))}});
    controller->ReadUISettingForLastLanguage();
    EXPECT_EQ(controller->supportLanguageProfileLanguage, 4);
    controller->ReadUISetting();
    EXPECT_EQ(controller->supportLanguageProfileLanguage, 10);
    write({{"Language", PropertyListValue(int64_t{3})}}); // not offered
    controller->ReadUISettingForLastLanguage();
    EXPECT_EQ(controller->profileLanguage, 3);
    EXPECT_EQ(controller->supportLanguageProfileLanguage, 10);
}

TEST_F(SettingsStoreTest, WritesNothingBeforeTheEnd) {
    controller_->ReadSettingForCreateFolder();
    EXPECT_EQ(controller_->SelectFolderAutoDetectFlag, 1);
    controller_->WriteUISetting(nullptr);
    EXPECT_FALSE(fileExists(file_));
}

TEST_F(SettingsStoreTest, WritesADefaultFileOnRequest) {
    controller_->scannerName = "x";
    controller_->writeDefaultSetting(nullptr);
    EXPECT_EQ(controller_->scannerName, "");
    const PropertyListDictionary expected{{"FileFormat", PropertyListValue(int64_t{1})},
                                          {"SavePath", "/Users/kai_morn/Documents"}};
    EXPECT_EQ(written(), (PropertyListDictionary{{"Corvane", PropertyListValue(expected)}}));
}

TEST_F(SettingsStoreTest, AsksNothingBackFromItsMessage) {
    Alert shown;
    setAlertPresenter([&shown](const Alert& alert) {
        shown = alert;
        return alertDefaultReturn;
    });
    EXPECT_EQ(controller_->input("Name\n1.0", "Copyright"), nullptr);
    EXPECT_EQ(shown.message, "Name\n1.0");
    EXPECT_EQ(shown.informativeText, "Copyright");
    setAlertPresenter({});
}
