#include "sources/sane/SourceBundles.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/places/Places.h"
#include "platform/plist/PropertyList.h"
#include "sources/worker/OptionSettings.h"

#include <cstdio>
#include <optional>

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace paperline::sources {

namespace {

constexpr const char* executableName = "SaneSource";
constexpr const char* workerName = "paperline-sane-worker";
// Bundles that are being written or removed; a leading dot hides them.
constexpr const char* temporaryPrefix = ".paperline-discovery-";
constexpr int lockAttempts = 300; // every tenth of a second

std::vector<uint8_t> bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string configurationPath(const std::string& bundlePath) {
    return bundlePath + "/Versions/A/Resources/source.conf";
}

std::string configurationText(const KnownBundle& bundle, const BundleParts& parts) {
    return "library=" + parts.library + "\nworker=" + parts.worker + "\nhelpers=" + parts.helpers +
           "\ndevice=" + bundle.device + "\nproduct=" + bundle.product +
           "\nmanufacturer=" + saneManufacturer + "\nfamily=" + saneProductFamily + "\n";
}

std::optional<std::vector<uint8_t>> informationBytes(const KnownBundle& bundle) {
    return serialisePropertyList({{"CFBundleExecutable", executableName},
                                  {"ProductName", bundle.product.c_str()},
                                  {"Manufacturer", saneManufacturer}});
}

// Writes only when the bytes differ.
bool bringUpToDate(const std::string& path, const std::vector<uint8_t>& bytes) {
    const auto present = readFile(path, bytes.size() + 1);
    return (present && *present == bytes) || writeFileAtomically(path, bytes);
}

// Nothing unless discovery made the bundle. A copy under another name belongs to the user.
std::optional<KnownBundle> readBundle(const std::string& folder, const std::string& name) {
    const auto text =
        readTextFile(configurationPath(folder + "/" + name), maximumConfigurationBytes);
    if (!text)
        return std::nullopt;
    KnownBundle bundle{name, {}, {}};
    std::string worker;
    for (OptionSetting& line : parseOptionSettings(*text)) {
        if (line.name == "worker")
            worker = lastPathComponent(line.value);
        else if (line.name == "product")
            bundle.product = std::move(line.value);
        else if (line.name == "device")
            bundle.device = std::move(line.value);
    }
    if (worker != workerName || bundle.device.empty() || name != bundleFolderName(bundle.product))
        return std::nullopt;
    return bundle;
}

} // namespace

BundleParts partsBesideThisProgram() {
    const std::string program = runningProgram();
    const std::string helpers = folderOfPath(program);
    const std::string frameworks = folderOfPath(helpers) + "/Frameworks";
    return {frameworks + "/paperline-source-stub.so",
            frameworks + "/libpaperline-source.so",
            program,
            helpers};
}

bool SourceBundles::open(const std::string& folder) {
    target_ = folder;
    folder_ = folder;
    const std::string parent = folderOfPath(folder);
    const std::string name = lastPathComponent(folder);
    if (!createFolderWithParents(parent) || !lock(parent + "/." + name + ".lock"))
        return false;
    if (!folderExists(folder)) {
        folder_ = parent + "/" + temporaryPrefix + name;
        removePath(folder_);
        return createFolder(folder_);
    }
    removeLeftovers();
    readFolder();
    return true;
}

bool SourceBundles::lock(const std::string& path) {
    lock_ = openFile(path, O_RDWR | O_CREAT | O_NOFOLLOW, 0600);
    if (!lock_.isOpen())
        return false;
    for (int attempt = 0; flock(lock_.number(), LOCK_EX | LOCK_NB) != 0; ++attempt) {
        if (attempt == lockAttempts)
            return false;
        usleep(100000);
    }
    return true;
}

bool SourceBundles::publish() {
    return folder_ == target_ || rename(folder_.c_str(), target_.c_str()) == 0;
}

void SourceBundles::removeLeftovers() const {
    for (const std::string& name : folderEntries(folder_))
        if (name.starts_with(temporaryPrefix))
            removePath(folder_ + "/" + name);
}

void SourceBundles::readFolder() {
    for (const std::string& name : folderEntries(folder_)) {
        std::optional<KnownBundle> bundle;
        if (pathExtension(name) == "ds")
            bundle = readBundle(folder_, name);
        if (bundle)
            known_.push_back(std::move(*bundle));
        else
            otherEntries_.insert(name);
    }
}

bool SourceBundles::write(const KnownBundle& bundle, const BundleParts& parts) const {
    const std::string path = folder_ + "/" + bundle.folder;
    if (folderExists(path))
        return writeFiles(path, bundle, parts);
    const std::string temporary = folder_ + "/" + temporaryPrefix + bundle.folder;
    const bool made = createFolderWithParents(temporary + "/Versions/A/Resources") &&
                      writeFiles(temporary, bundle, parts) &&
                      rename(temporary.c_str(), path.c_str()) == 0;
    if (!made)
        removePath(temporary);
    return made;
}

bool SourceBundles::writeFiles(const std::string& bundlePath,
                               const KnownBundle& bundle,
                               const BundleParts& parts) const {
    constexpr uint64_t maximumStubBytes = 16 << 20;
    const auto stub = readFile(parts.loaderStub, maximumStubBytes);
    const auto information = informationBytes(bundle);
    const std::string inside = bundlePath + "/Versions/A/";
    return stub && information && bringUpToDate(inside + executableName, *stub) &&
           chmod((inside + executableName).c_str(), 0755) == 0 &&
           bringUpToDate(inside + "Resources/Info.plist", *information) &&
           bringUpToDate(configurationPath(bundlePath), bytesOf(configurationText(bundle, parts)));
}

bool SourceBundles::remove(const KnownBundle& bundle) const {
    const std::string temporary = folder_ + "/" + temporaryPrefix + bundle.folder;
    return rename((folder_ + "/" + bundle.folder).c_str(), temporary.c_str()) == 0 &&
           removePath(temporary);
}

} // namespace paperline::sources
