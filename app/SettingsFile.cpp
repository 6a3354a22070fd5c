#include "app/SettingsFile.h"

#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/places/Places.h"

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
    // Replacing a file needs the right to change its folder.
    if (isWritable(folderOfPath(inBundle)))
        return inBundle;
    // A folder that cannot be made shows when the file is written.
    [[maybe_unused]] const bool made = createFolderWithParents(folderOfPath(ownFile()));
    return ownFile();
}

} // namespace paperline
