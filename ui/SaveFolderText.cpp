#include "ui/SaveFolderText.h"

#include "platform/files/PathText.h"

namespace paperline {

std::string absoluteFolderText(const std::string& folderText, const std::string& homeFolder) {
    if (folderText.empty() || folderText.front() == '/')
        return folderText;
    const auto below = [&folderText] {
        if (folderText == "~")
            return std::string(1, '/');
        return folderText.starts_with("~/") ? folderText.substr(1) : '/' + folderText;
    }();
    return homeFolder == "/" ? below : homeFolder + below;
}

std::string nameToCarryOver(const std::string& folderText) {
    if (folderText.ends_with('/'))
        return "Image";
    return lastPathComponent(folderText);
}

std::string chosenFolderText(const std::string& chosenFolder,
                             const std::string& name,
                             bool nameComesFromField) {
    if (!nameComesFromField)
        return chosenFolder;
    return chosenFolder.ends_with('/') ? chosenFolder + name : chosenFolder + "/" + name;
}

std::string folderOfPages(const std::string& folderText, bool nameComesFromField) {
    if (!nameComesFromField || folderText.ends_with('/'))
        return folderText;
    return folderOfPath(folderText);
}

} // namespace paperline
