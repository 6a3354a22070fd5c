#include "app/SettingsFile.h"

#include "base/BrandProfile.h"
#include "base/LanguageBundle.h"
#include "platform/files/Files.h"
#include "platform/files/NewFile.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "platform/plist/PropertyList.h"
#include "platform/process/SystemLog.h"
#include "ui/LanguageTable.h"

#include <cerrno>

namespace paperline {
namespace {

std::string ownFile() {
    return userDataFolder() + "/" + settingsFileInBundle;
}

bool setAside(const std::string& path) {
    constexpr int mostSetAside = 1000;
    std::string name = path + ".damaged";
    for (int number = 2; number <= mostSetAside; ++number) {
        const int failure = renameWithoutReplacing(path, name);
        if (failure != EEXIST) {
            systemLog(failure == 0
                          ? "The settings could not be read. They were set aside as " + name
                          : "The settings can neither be read nor set aside: " + path);
            return failure == 0;
        }
        name = path + ".damaged " + std::to_string(number);
    }
    return false;
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

bool writeSettingsFile(const std::string& path, const PropertyListDictionary& root) {
    const bool isDamaged = readPropertyList(path).status == PropertyListStatus::damaged;
    return (!isDamaged || setAside(path)) && writePropertyListAtomically(path, root);
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
