#include "dsm/SourceFiles.h"

#include "dsm/InfoPlist.h"
#include "dsm/Log.h"
#include "platform/places/StandardFolders.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

namespace paperline::dsm {
namespace {

constexpr size_t mostEntriesOfFolder = 4096;
constexpr size_t mostSourceFiles = 512;
constexpr int deepestFolder = 8;

struct FolderCloser {
    void operator()(DIR* folder) const noexcept { static_cast<void>(::closedir(folder)); }
};

std::vector<std::string> sortedEntries(const std::string& folder) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, FolderCloser> stream(::opendir(folder.c_str()));
    if (!stream)
        return names;
    while (const dirent* entry = ::readdir(stream.get())) {
        const std::string_view name = static_cast<const char*>(entry->d_name);
        if (name == "." || name == "..")
            continue;
        if (names.size() == mostEntriesOfFolder) {
            logLine(folder + ": more entries than are looked at");
            break;
        }
        names.emplace_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool hasBundleExtension(std::string_view name) {
    if (name.size() < 4)
        return false;
    const std::string_view end = name.substr(name.size() - 3);
    return end[0] == '.' && (end[1] | 0x20) == 'd' && (end[2] | 0x20) == 's';
}

// "scanner.ds" and, as makers number their libraries, "scanner.ds.2".
bool isPlainSourceName(std::string_view name) {
    const size_t at = name.find(".ds");
    return at != std::string_view::npos && (at + 3 == name.size() || name[at + 3] == '.');
}

class Collector {
public:
    void addBundlesOf(const std::string& folder) {
        for (const std::string& name : sortedEntries(folder))
            if (hasBundleExtension(name))
                addBundle(folder + "/" + name);
    }

    // Links are passed over: they are other names of files that are found anyway, or lead away.
    void addFilesBelow(const std::string& folder, int depth) {
        for (const std::string& name : sortedEntries(folder)) {
            const std::string path = folder + "/" + name;
            struct stat status {};
            if (::lstat(path.c_str(), &status) != 0)
                continue;
            if (S_ISDIR(status.st_mode) && depth < deepestFolder)
                addFilesBelow(path, depth + 1);
            else if (S_ISREG(status.st_mode) && isPlainSourceName(name))
                add({path, false}, status);
        }
    }

    std::vector<SourceFile> take() { return std::move(files_); }

private:
    void addBundle(const std::string& bundle) {
        struct stat status {};
        if (::stat(bundle.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
            logLine(bundle + ": is no bundle");
            return;
        }
        const std::optional<BundleInfo> info =
            readBundleInfo(bundle + "/Versions/A/Resources/Info.plist");
        if (!info) {
            logLine(bundle + ": has no usable Info.plist");
            return;
        }
        const std::string path = bundle + "/Versions/A/" + info->executable;
        if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
            logLine(path + ": is no file");
            return;
        }
        add({path, info->fallback}, status);
    }

    void add(SourceFile file, const struct stat& status) {
        if (files_.size() == mostSourceFiles)
            logLine(file.path + ": one data source too many");
        else if (seen_.emplace(status.st_dev, status.st_ino).second)
            files_.push_back(std::move(file));
    }

    std::vector<SourceFile> files_;
    std::set<std::pair<dev_t, ino_t>> seen_;
};

std::string ownFile() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<const void*>(&searchPlaces), &info) == 0 ||
        info.dli_fname == nullptr)
        return {};
    const std::unique_ptr<char, decltype(&std::free)> path(::realpath(info.dli_fname, nullptr),
                                                           &std::free);
    return path ? path.get() : std::string();
}

} // namespace

std::string folderOfBundleAround(const std::string& libraryPath) {
    std::string_view rest = libraryPath;
    rest = rest.substr(0, std::min(rest.rfind('/'), rest.size()));
    constexpr std::string_view frameworks = "/Contents/Frameworks";
    if (!rest.ends_with(frameworks))
        return {};
    rest.remove_suffix(frameworks.size());
    const size_t slash = rest.rfind('/');
    return slash == std::string_view::npos ? std::string() : std::string(rest.substr(0, slash));
}

SearchPlaces searchPlaces() {
    return {bundleFolders(folderOfBundleAround(ownFile())), systemPlace(plainSourceFolder)};
}

std::vector<SourceFile> findSourceFiles(const SearchPlaces& places) {
    Collector collector;
    for (const std::string& folder : places.bundleFolders)
        collector.addBundlesOf(folder);
    collector.addFilesBelow(places.plainFolder, 0);
    return collector.take();
}

} // namespace paperline::dsm
