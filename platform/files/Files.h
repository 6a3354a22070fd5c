// Files and folders by name: what is there, making, listing and removing. Errors are values;
// nothing here throws. Paths are UTF-8.
#pragma once

#include <string>
#include <vector>

namespace paperline {

bool fileExists(const std::string& path); // a file or a folder; a dangling link does not exist
bool folderExists(const std::string& path);
bool isWritable(const std::string& path); // this user may write it (folder: may add entries)

[[nodiscard]] bool createFolder(const std::string& path); // one level, mode 0777 less umask
// True when the folder exists afterwards. `mode` is reduced by the umask.
[[nodiscard]] bool createFolderWithParents(const std::string& path, unsigned mode = 0777);
// A scratch folder: mode 0700, made here or already this user's own; never through a link.
[[nodiscard]] bool createPrivateFolder(const std::string& path);

// True for a file or folder (not a link) that belongs to this user or to root.
bool ownedByUserOrRoot(const std::string& path);

// Removes a file, a link (never what it points to) or a folder with all it holds. True when
// nothing is there afterwards.
bool removePath(const std::string& path);

// Names below the folder: one level, or every file and folder at any depth as relative paths, in
// the order the file system gives. Not followed through links. Empty when it cannot be read.
std::vector<std::string> folderEntries(const std::string& folder);
std::vector<std::string> deepFolderEntries(const std::string& folder);

} // namespace paperline
