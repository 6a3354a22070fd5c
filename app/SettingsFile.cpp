#include "app/SettingsFile.h"

#include "platform/files/Files.h"
#include "platform/files/NewFile.h"
#include "platform/files/PathText.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

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
    // Replacing a file needs the right to change its folder.
    if (isWritable(folderOfPath(inBundle)))
        return inBundle;
    // A folder that cannot be made shows when the file is written.
    [[maybe_unused]] const bool made = createFolderWithParents(folderOfPath(ownFile()));
    return ownFile();
}

bool writeSettingsFile(const std::string& path, const PropertyListDictionary& root) {
    const bool isDamaged = readPropertyList(path).status == PropertyListStatus::damaged;
    return (!isDamaged || setAside(path)) && writePropertyListAtomically(path, root);
}

} // namespace paperline
