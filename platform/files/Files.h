// Looks for, creates, lists and removes files and folders. Errors are values, nothing throws. Paths
// are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace paperline {

// Of a link, not of what it points to. Nothing if nothing has that name.
std::optional<struct stat> statusOf(const std::string& path);
bool fileExists(const std::string& path); // a file or a folder; a dangling link does not exist
bool folderExists(const std::string& path);
bool isWritable(const std::string& path); // for a folder: entries can be created in it

[[nodiscard]] bool createFolder(const std::string& path); // one level, mode 0777 less umask
// True when the folder exists afterwards. `mode` is reduced by the umask.
[[nodiscard]] bool createFolderWithParents(const std::string& path, unsigned mode = 0777);
// A folder of mode 0700, created or already this user's own. Links are refused.
[[nodiscard]] bool createPrivateFolder(const std::string& path);

// False for links.
bool ownedByUserOrRoot(const std::string& path);

// Removes a file, a folder with its content or a link, but not what links point to. True when
// nothing has that name afterwards.
bool removePath(const std::string& path);

// The names in a folder, unsorted. Empty when it cannot be read.
std::vector<std::string> folderEntries(const std::string& folder);
// Relative paths of all files and folders at any depth; links are not followed.
std::vector<std::string> deepFolderEntries(const std::string& folder);

} // namespace paperline
