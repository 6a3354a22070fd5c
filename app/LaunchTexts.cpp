#include "app/LaunchTexts.h"

#include "app/SettingsFile.h"
#include "base/BrandProfile.h"
#include "base/LanguageBundle.h"
#include "platform/host/Host.h"
#include "platform/plist/PropertyList.h"
#include "ui/LanguageTable.h"

#include <vector>

namespace paperline {

int32_t launchLanguage(const std::string& bundle, uint32_t brandNumber) {
    const PropertyListFile settings = readPropertyList(settingsFileToRead(bundle));
    if (settings.status != PropertyListStatus::missing) {
        const PropertyListValue* stored = find(settings.root, "Language");
        const int64_t language = stored != nullptr ? stored->asInteger().value_or(0) : 0;
        return languageInTable(static_cast<int32_t>(language));
    }
    const std::vector<std::string> preferred = host().preferredLanguages();
    const int32_t language =
        preferred.empty() ? languageEnglish : languageOfPreference(withoutRegion(preferred[0]));
    const bool offered = isLanguageOffered(brandProfile(brandNumber).supportedLanguages, language);
    return offered ? language : languageEnglish;
}

std::string launchText(const std::string& bundle, uint32_t brandNumber, const std::string& key) {
    const auto language = static_cast<size_t>(launchLanguage(bundle, brandNumber));
    const std::string folder =
        bundle + "/Contents/Resources/" + languageTable[language].resourceFolder;
    return localizedString(LanguageBundle::load(folder), key);
}

} // namespace paperline
