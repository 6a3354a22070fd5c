// Bundles of SANE devices on disk. Each appears, changes and goes whole.
#pragma once

#include "platform/files/Descriptor.h"
#include "sources/sane/BundlePlan.h"

#include <set>
#include <string>
#include <vector>

namespace paperline::sources {

inline constexpr const char* saneManufacturer = "Corvane";
inline constexpr const char* saneProductFamily = "PageCentral";

// Where the parts are that a bundle copies or names.
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
    // False: the folder cannot be had, or another discovery holds it and does not finish. A folder
    // that is not there yet appears with publish, so that whoever waits for it finds it filled.
    [[nodiscard]] bool open(const std::string& folder);
    [[nodiscard]] bool publish();

    // Those that a discovery made, and the names of all other entries.
    std::vector<KnownBundle> known() const { return known_; }
    std::set<std::string> otherEntries() const { return otherEntries_; }

    // Makes the bundle, or brings its files up to date; what else lies in it stays.
    [[nodiscard]] bool write(const KnownBundle& bundle, const BundleParts& parts) const;
    [[nodiscard]] bool remove(const KnownBundle& bundle) const;

private:
    void look();
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
