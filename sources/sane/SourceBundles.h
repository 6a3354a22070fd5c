// The bundles of SANE devices on disk. Each appears and disappears as a whole.
#pragma once

#include "platform/files/Descriptor.h"
#include "sources/sane/BundlePlan.h"

#include <set>
#include <string>
#include <vector>

namespace paperline::sources {

inline constexpr const char* saneManufacturer = "Corvane";
inline constexpr const char* saneProductFamily = "PageCentral";

// The files that a bundle copies or names.
struct BundleParts {
    std::string loaderStub; // copied
    std::string library;
    std::string worker;
    std::string helpers;
};
// Beside the running worker program: Contents/Helpers and Contents/Frameworks.
BundleParts partsBesideThisProgram();

class SourceBundles {
public:
    // False: the folder cannot be made or read, or another discovery does not finish. A new folder
    // appears in publish(), filled, because the application waits for it.
    [[nodiscard]] bool open(const std::string& folder);
    [[nodiscard]] bool publish();

    // Those that discovery made, and the names of all other entries.
    std::vector<KnownBundle> known() const { return known_; }
    std::set<std::string> otherEntries() const { return otherEntries_; }

    // Makes the bundle or updates its files; other files in it stay.
    [[nodiscard]] bool write(const KnownBundle& bundle, const BundleParts& parts) const;
    [[nodiscard]] bool remove(const KnownBundle& bundle) const;

private:
    void readFolder();
    void removeLeftovers() const;
    [[nodiscard]] bool writeFiles(const std::string& bundlePath,
                                  const KnownBundle& bundle,
                                  const BundleParts& parts) const;

    [[nodiscard]] bool lock(const std::string& path);

    std::string folder_; // where the bundles are written
    std::string target_; // where they belong
    Descriptor lock_;    // held while the folder is changed
    std::vector<KnownBundle> known_;
    std::set<std::string> otherEntries_;
};

} // namespace paperline::sources
