#include "platform/files/Files.h"

#include "platform/files/Descriptor.h"
#include "platform/files/PathText.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace paperline {
namespace {

namespace fs = std::filesystem;

// Checks an open folder: in a shared folder another user could replace it between two checks by
// name.
bool isOwnPrivateFolder(const std::string& path) {
    const Descriptor folder = openFile(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    struct stat status = {};
    if (!folder.isOpen() || ::fstat(folder.number(), &status) != 0)
        return false;
    if (status.st_uid != ::geteuid())
        return false;
    return (status.st_mode & 07777) == 0700 || ::fchmod(folder.number(), 0700) == 0;
}

} // namespace

std::optional<struct stat> statusOf(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

bool fileExists(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0;
}

bool folderExists(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isWritable(const std::string& path) {
    const int wanted = folderExists(path) ? W_OK | X_OK : W_OK;
    return ::faccessat(AT_FDCWD, path.c_str(), wanted, AT_EACCESS) == 0;
}

bool ownedByUserOrRoot(const std::string& path) {
    const std::optional<struct stat> status = statusOf(withoutTrailingSlashes(path));
    return status && !S_ISLNK(status->st_mode) &&
           (status->st_uid == ::geteuid() || status->st_uid == 0);
}

bool createFolder(const std::string& path) {
    return ::mkdir(path.c_str(), 0777) == 0;
}

bool createFolderWithParents(const std::string& path, unsigned mode) {
    // If a parent cannot be created, neither can the folder itself.
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        (void)::mkdir(path.substr(0, slash).c_str(), mode);
    return ::mkdir(path.c_str(), mode) == 0 || folderExists(path);
}

bool createPrivateFolder(const std::string& path) {
    const std::string name = withoutTrailingSlashes(path);
    if (::mkdir(name.c_str(), 0700) != 0 && errno != EEXIST)
        return false;
    return isOwnPrivateFolder(name);
}

bool removePath(const std::string& path) {
    if (path.empty())
        return false;
    std::error_code error;
    // remove_all opens every level by descriptor and follows no links.
    fs::remove_all(withoutTrailingSlashes(path), error);
    return !error;
}

std::vector<std::string> folderEntries(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(entry->path().filename().string());
    return names;
}

std::vector<std::string> deepFolderEntries(const std::string& folder) {
    const std::string top = withoutTrailingSlashes(folder);
    const size_t prefixLength = top == "/" ? 1 : top.size() + 1;
    std::vector<std::string> names;
    std::error_code error;
    const auto options = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator entry(top, options, error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(entry->path().string().substr(prefixLength));
    return names;
}

} // namespace paperline
