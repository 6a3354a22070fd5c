// State of the interface language.
#pragma once

#include "base/LanguageBundle.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace paperline {

struct AvailableLanguage {
    int32_t langID = 0;
    std::string langFolder;  // "en.lproj"
    std::string displayName; // menu name
};

struct LocalisationState {
    std::shared_ptr<const LanguageBundle> osLangBundle;
    std::shared_ptr<const LanguageBundle> mlangBundle;
    std::shared_ptr<const LanguageBundle> appBundle;
    int32_t currentLanguage = 0;
    int32_t currentOSLanguage = 0;
    int32_t sysLanguage = 0;
    int32_t availableCount = 0;
    std::array<AvailableLanguage, 64> availableLanguage;
    AvailableLanguage* pAvailable = nullptr;
};

// The bundle through which the message operations look up their texts.
extern std::shared_ptr<const LanguageBundle> gLanguageBundle;

} // namespace paperline
