// What the text of the save-folder field means for the next scan and for the folder chooser.
#pragma once

#include <string>

namespace paperline {

// The text as an absolute path: "~" is the home folder, and a text that does not start with "/"
// counts from there too. An empty text stays empty.
std::string absoluteFolderText(const std::string& folderText, const std::string& homeFolder);

// The last part of the field's text is the template of file names; a text ending in "/" has none.
// Choosing another folder carries the last part over to it ("Image" when there is none).
std::string nameToCarryOver(const std::string& folderText);

// The field's new text: the chosen folder, "/" and the name, or the bare folder when names are not
// taken from the field.
std::string
chosenFolderText(const std::string& chosenFolder, const std::string& name, bool nameComesFromField);

// The folder in which pages appear: the one above the last part, or the text itself when it ends in
// "/" or names are not taken from it.
std::string folderOfPages(const std::string& folderText, bool nameComesFromField);

} // namespace paperline
