// Operations of AppDelegate that read and write the settings file.
#include "controller/AppDelegate.h"

#include "app/SettingsFile.h"
#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "platform/desktop/Alert.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "platform/process/SystemLog.h"
#include "ui/LanguageTable.h"
#include "ui/SaveFolderTextField.h"

#include <array>
#include <cassert>

namespace paperline {

bool launchAborted = false;

namespace {

// Taken without a settings file, until fixUpSaveFolder() puts the user's own folder in their place.
constexpr const char* fallbackSaveFolder = "/Users/kai_morn/Documents/Image";
constexpr const char* fallbackDocumentsFolder = "/Users/kai_morn/Documents";
constexpr const char* defaultImageName = "Image";

std::optional<int32_t> integerUnder(const PropertyListDictionary& dictionary, const char* key) {
    const PropertyListValue* value = find(dictionary, key);
    if (value == nullptr)
        return std::nullopt;
    // What is no number counts as 0.
    return static_cast<int32_t>(value->asInteger().value_or(0));
}

std::string profileKey(const std::string& currentProductName) {
    return appendPathComponent(host().loginName(), currentProductName);
}

} // namespace

void AppDelegate::ReadDefaultScannerName() {
    TraceScope trace("ReadDefaultScannerName");
    const PropertyListFile file = readPropertyList(settingsFileToRead(mCurrentPath));
    if (file.status == PropertyListStatus::missing)
        scannerName.clear();
    else if (file.status == PropertyListStatus::read)
        scannerName = textUnder(file.root, "ScannerName");
}

void AppDelegate::ReadDefaultSaveImageName() {
    TraceScope trace("ReadDefaultSaveImageName");
    const PropertyListFile file = readPropertyList(settingsFileToRead(mCurrentPath));
    if (file.status == PropertyListStatus::missing) {
        saveImageName = defaultImageName;
    } else {
        // A damaged file changes nothing.
        if (file.status == PropertyListStatus::read)
            saveImageName = textUnder(file.root, "SaveImageName");
        if (saveImageName.empty())
            saveImageName = defaultImageName;
    }
    updateDateTimeInfo2();
}

void AppDelegate::ReadUISettingForLastLanguage() {
    TraceScope trace("ReadUISettingForLastLanguage");
    dictCurrentFolder.reset();
    const PropertyListFile file = readPropertyList(settingsFileToRead(mCurrentPath));
    if (file.status == PropertyListStatus::missing) {
        profileLanguage = setFirstUILanguage(2);
        return;
    }
    if (const std::optional<int32_t> language = integerUnder(file.root, "Language"))
        setProfileLanguage(*language);
}

void AppDelegate::ReadSettingForCreateFolder() {
    TraceScope trace("ReadSettingForCreateFolder");
    SelectFolderAutoDetectFlag = 1;
}

void AppDelegate::ReadUISetting() {
    TraceScope trace("ReadUISetting");
    dictCurrentFolder.reset();
    ReadSettingForCreateFolder();

    const PropertyListFile file = readPropertyList(settingsFileToRead(mCurrentPath));
    if (file.status == PropertyListStatus::missing)
        return setDefaultProfile();

    const PropertyListValue* entry = find(file.root, profileKey(currentProductName));
    const PropertyListDictionary* profile = entry != nullptr ? entry->asDictionary() : nullptr;
    if (profile == nullptr)
        return;
    dictCurrentFolder = *profile;
    profileFolderName = textUnder(*profile, "SavePath");
    profileFileformatSelect =
        integerUnder(*profile, "FileFormat").value_or(profileFileformatSelect);
    if (const std::optional<int32_t> language = integerUnder(*profile, "Language"))
        setProfileLanguage(*language);
    profileShowInFinder = integerUnder(*profile, "ShowInFinder").value_or(profileShowInFinder);
}

void AppDelegate::setDefaultProfile() {
    profileFolderName =
        SelectFolderAutoDetectFlag != 0 ? fallbackSaveFolder : fallbackDocumentsFolder;
    const BrandProfile& brand = brandProfile(gBrandNumber);
    profileFileformatSelect = brand.defaultFileFormat;
    profileLanguage = setFirstUILanguage(2);
    if (!brand.supportedLanguages.empty())
        supportLanguageProfileLanguage =
            languageMenuPosition(brand.supportedLanguages, profileLanguage).value_or(0);
    profileShowInFinder = 0;
}

void AppDelegate::fixUpSaveFolder() {
    const std::string documents = appendPathComponent(host().homeFolder(), "Documents");
    const bool autoDetect = SelectFolderAutoDetectFlag != 0;
    if (!dictCurrentFolder) {
        profileFolderName = autoDetect ? documents + "/Image" : documents;
    } else {
        profileFolderName = textUnder(*dictCurrentFolder, "SavePath");
        if (autoDetect && profileFolderName.empty())
            profileFolderName = documents + "/Image";
        else if (!autoDetect && !fileExists(profileFolderName))
            profileFolderName = documents; // on purpose without "/Image"
    }
    if (currentSaveFolder != nullptr)
        currentSaveFolder->setFolderText(profileFolderName);
}

void AppDelegate::writeSettingsAtTermination() {
    const std::string path = settingsFileToWrite(mCurrentPath);
    PropertyListDictionary root = readPropertyList(settingsFileToRead(mCurrentPath)).root;
    root["ScannerName"] = PropertyListValue(scannerName);
    root["Language"] = PropertyListValue(int64_t{profileLanguage});

    const std::string key = profileKey(currentProductName);
    PropertyListDictionary profile;
    if (const PropertyListValue* old = find(root, key);
        old != nullptr && old->asDictionary() != nullptr)
        profile = *old->asDictionary();

    if (currentSaveFolder != nullptr)
        profileFolderName = currentSaveFolder->folderText();
    if (!profileFolderName.empty() && profileFolderName.back() == '/')
        profileFolderName += defaultImageName;
    profile["SavePath"] = PropertyListValue(profileFolderName);
    profile["FileFormat"] = PropertyListValue(int64_t{profileFileformatSelect});
    profile["Language"] = PropertyListValue(int64_t{profileLanguage});
    profile["ShowInFinder"] = PropertyListValue(int64_t{profileShowInFinder});
    root[key] = PropertyListValue(std::move(profile));

    if (!writeSettingsFile(path, root))
        traceText("settings not written", path);
}

void AppDelegate::writeDefaultSetting(QObject* /*ignored*/) {
    TraceScope trace("writeDefaultSetting");
    PropertyListDictionary profile;
    profile["FileFormat"] =
        PropertyListValue(int64_t{brandProfile(gBrandNumber).defaultFileFormat});
    profile["SavePath"] = PropertyListValue(fallbackDocumentsFolder);
    scannerName = std::string();
    PropertyListDictionary root;
    root["Corvane"] =
        PropertyListValue(std::move(profile)); // the company word, no user/product key
    if (!writeSettingsFile(settingsFileToWrite(mCurrentPath), root))
        traceText("settings not written", settingsFileToWrite(mCurrentPath));
}

void AppDelegate::WriteUISetting(QObject* /*ignored*/) {
    TraceScope trace("WriteUISetting"); // settings are written at termination only
}

void* AppDelegate::input(const std::string& message, const std::string& defaultValue) {
    TraceScope trace("input");
    const int button = runAlertPanel(
        {.title = "", .message = message, .informativeText = defaultValue, .defaultButton = ""});
    if (button != alertDefaultReturn && button != alertAlternateReturn) {
        systemLog("Invalid input dialog button " + std::to_string(button));
        assert(!"Invalid input dialog button");
    }
    return nullptr;
}

} // namespace paperline
