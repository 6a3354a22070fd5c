// Settings held in memory and the switch between launch kinds.
#pragma once

#include "platform/plist/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>

namespace paperline {

struct SettingsState {
    std::optional<PropertyListDictionary>
        dictCurrentFolder;                    // profile of the current user and product
    std::string profileFolderName;            // save folder
    std::string createFolerprofileFolderName; // folder that pages are written to
    int32_t profileFileformatSelect = 0;      // file-format code, base/FileFormats.h
    int32_t fileformatSelectTmp = 0;
    int32_t profileLanguage = 0;                // index into the language table
    int32_t profileShowInFinder = 0;            // 1: reveal saved files
    int32_t supportLanguageProfileLanguage = 0; // position in the brand's Language menu
    int32_t supportLanguageCurrentLanguage = 0;
    std::string supportedLanguage; // "00,01,..." or empty: all
    std::string saveImageName;     // file-name template
    std::string SelectFolderAutoDetect;
    uint8_t SelectFolderAutoDetectFlag = 0;
    int32_t dsOldLanguage = 0; // the data source's own language

    std::string mCurrentPath;  // the bundle
    std::string mResourcePath; // its resources
    int32_t mMenuFileSave = 0;
    int32_t mSaveScanFlow = 0;
    int32_t mScanSetup = 0;
    uint8_t _FloppySwitchON = 0;
    int32_t mVersionMajor = 0;
    int32_t mVersionMinor = 0;
    int32_t mVersionBugFix = 0;
};

extern bool launchAborted; // launch ended in a terminate: nothing is written at exit

} // namespace paperline
