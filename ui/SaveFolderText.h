// What the text of the save-folder field means for the next scan and for the folder chooser.
#pragma once

#include <string>

namespace paperline {

// The text as an absolute path: "~" and texts that do not start with "/" begin at the home folder.
// An empty text stays empty.
std::string absoluteFolderText(const std::string& folderText, const std::string& homeFolder);

// The text's last part is the template of file names. It is carried over to a newly chosen folder;
// "Image" for a text that ends in "/".
std::string nameToCarryOver(const std::string& folderText);

// The field's new text: the chosen folder with the name, if names are taken from the field.
std::string
chosenFolderText(const std::string& chosenFolder, const std::string& name, bool nameComesFromField);

// The folder of the pages: the text without its last part, if names are taken from the field.
std::string folderOfPages(const std::string& folderText, bool nameComesFromField);

} // namespace paperline
