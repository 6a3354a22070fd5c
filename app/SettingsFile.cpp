#include "app/SettingsFile.h"

#include "base/BrandProfile.h"
#include "base/LanguageBundle.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "platform/plist/PropertyList.h"
#include "ui/LanguageTable.h"

namespace paperline {
namespace {

std::string ownFile() {
    return userDataFolder() + "/" + settingsFileInBundle;
}

} // namespace

std::string settingsFileToRead(const std::string& bundle) {
    return fileExists(ownFile()) ? ownFile() : bundle + "/" + settingsFileInBundle;
}

std::string settingsFileToWrite(const std::string& bundle) {
    if (fileExists(ownFile()))
        return ownFile();
    const std::string inBundle = bundle + "/" + settingsFileInBundle;
    // A file is replaced by renaming, which changes its folder.
    if (isWritable(folderOfPath(inBundle)))
        return inBundle;
    // Without the folder, writing the file fails.
    [[maybe_unused]] const bool made = createFolderWithParents(folderOfPath(ownFile()));
    return ownFile();
}

int32_t launchLanguage(const std::string& bundle, uint32_t brandNumber) {
    const PropertyListFile settings = readPropertyList(settingsFileToRead(bundle));
    if (settings.status == PropertyListStatus::missing)
        return systemLanguage(host().preferredLanguages(),
                              brandProfile(brandNumber).supportedLanguages);
    const PropertyListValue* stored = find(settings.root, "Language");
    const int64_t language = stored != nullptr ? stored->asInteger().value_or(0) : 0;
    return languageInTable(static_cast<int32_t>(language));
}

std::string launchText(const std::string& bundle, uint32_t brandNumber, const std::string& key) {
    const auto language = static_cast<size_t>(launchLanguage(bundle, brandNumber));
    const std::string folder =
        bundle + "/Contents/Resources/" + languageTable[language].resourceFolder;
    return localizedString(LanguageBundle::load(folder), key);
}

} // namespace paperline
