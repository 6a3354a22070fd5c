#include "platform/places/Places.h"

#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/places/ProcessScratch.h"

#include <array>
#include <climits>
#include <cstring>
#include <optional>
#include <unistd.h>
#include <utility>

namespace paperline {
namespace {

constexpr const char* sharedRoot = "/tmp";
// Names that the window uses in the scratch root.
constexpr std::array<const char*, 3> fixedNames{"CorvaneTempImage", "CPL_image.bmp", "1.jpg"};

std::optional<std::string>& bundleOverride() {
    static std::optional<std::string> path;
    return path;
}

struct ScratchChoice {
    std::optional<std::string> root;
    std::optional<ProcessScratch> own; // if the root is an own folder
};

ScratchChoice& scratch() {
    static ScratchChoice choice;
    return choice;
}

std::string findBundle() {
    const std::string programFolder = folderOfPath(runningProgram());
    for (std::string folder = programFolder; folder.size() > 1; folder = folderOfPath(folder))
        if (lastPathComponent(folder) == "Contents")
            return folderOfPath(folder);
    for (std::string folder = programFolder; folder.size() > 1; folder = folderOfPath(folder))
        if (const std::string bundle = appendPathComponent(folder, "Paperline.app");
            folderExists(bundle))
            return bundle;
    return programFolder;
}

std::string defaultScratchRoot() {
    const std::string front = environment("PAPERLINE_SCRATCH");
    return front.empty() ? sharedRoot : front + sharedRoot;
}

// True for links, too: another user may have made them.
bool belongsToAnotherUser(const std::string& path) {
    const std::optional<struct stat> status = statusOf(path);
    return status && (S_ISLNK(status->st_mode) || status->st_uid != ::geteuid());
}

bool fixedNamesAreOurs(const std::string& root) {
    for (const char* name : fixedNames)
        if (belongsToAnotherUser(appendPathComponent(root, name)))
            return false;
    return true;
}

std::optional<std::string> makeCacheRoot(std::string& error) {
    const std::string cache = userCacheFolder();
    if (cache.empty()) {
        error = "no cache folder: neither XDG_CACHE_HOME nor HOME is an absolute path";
        return std::nullopt;
    }
    const std::string root = cache + "/scratch";
    if (createFolderWithParents(folderOfPath(root)) && createPrivateFolder(root))
        return root;
    error = "the scratch folder " + root + " cannot be made";
    return std::nullopt;
}

std::optional<std::string> parentOfScratch(std::string& error) {
    const std::string root = defaultScratchRoot();
    if (root == sharedRoot || createFolderWithParents(root))
        return root;
    error = "the scratch folder " + root + " cannot be made";
    return std::nullopt;
}

// Where own folders may be. New ones go to the first.
std::vector<std::string> parentsOfOwnFolders() {
    const std::string parent = defaultScratchRoot();
    const std::string temporary = environment("TMPDIR");
    if (parent != sharedRoot || !temporary.starts_with('/') || temporary == parent)
        return {parent};
    return {temporary, parent};
}

} // namespace

std::string runningProgram() {
    std::array<char, PATH_MAX> buffer;
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    std::string path(buffer.data(), length > 0 ? static_cast<size_t>(length) : 0);
    constexpr std::string_view replaced = " (deleted)"; // by an update while the program runs
    if (path.ends_with(replaced) && !fileExists(path))
        path.resize(path.size() - replaced.size());
    return path;
}

std::string bundlePath() {
    if (bundleOverride())
        return *bundleOverride();
    static const std::string found = findBundle();
    return found;
}

std::string resourcePath() {
    return bundlePath() + "/Contents/Resources";
}

void setBundlePath(const std::string& path) {
    bundleOverride() = path;
}

std::string buildTreeFolder() {
    const std::string folder = folderOfPath(bundlePath());
    return folderExists(folder + "/TWAIN Data Sources") ? folder : std::string();
}

std::string scratchPath(const std::string& pathBelowTmp) {
    const size_t prefix = std::strlen(sharedRoot);
    const bool below = pathBelowTmp.starts_with(sharedRoot) &&
                       (pathBelowTmp.size() == prefix || pathBelowTmp[prefix] == '/');
    return below ? scratchRoot() + pathBelowTmp.substr(prefix) : pathBelowTmp;
}

std::string scratchRoot() {
    return scratch().root.value_or(defaultScratchRoot());
}

bool chooseScratchRoot(ScratchKind kind, std::string& error) {
    removeOwnScratchRoot();
    const std::optional<std::string> parent = parentOfScratch(error);
    if (!parent)
        return false;
    if (kind == ScratchKind::ownFolder) {
        std::optional<ProcessScratch> own =
            makeProcessScratch(parentsOfOwnFolders().front(), error);
        if (!own)
            return false;
        scratch() = {own->folder, std::move(own)};
        return true;
    }
    std::optional<std::string> root = fixedNamesAreOurs(*parent) ? parent : makeCacheRoot(error);
    if (!root)
        return false;
    scratch() = {std::move(root), std::nullopt};
    return true;
}

void removeOwnScratchRoot() {
    if (scratch().own)
        removePath(scratch().own->folder);
    scratch() = {};
}

std::vector<ProcessScratch> takeAbandonedScratchRoots() {
    std::vector<ProcessScratch> taken;
    for (const std::string& parent : parentsOfOwnFolders())
        for (ProcessScratch& scratch : takeAbandonedScratch(parent))
            taken.push_back(std::move(scratch));
    return taken;
}

std::vector<std::string> dataSourceFolders() {
    return bundleFolders(buildTreeFolder());
}

} // namespace paperline
