// Folders of a test: its own system root, user data folder and bundle, and the manager's log.
#pragma once

#include "tests/support/TestFolder.h"

#include <filesystem>
#include <string>

namespace paperline::test {

// Sets PAPERLINE_ROOT, HOME, XDG_DATA_HOME and PAPERLINE_DSM_LOG to a fresh folder and clears the
// switches of the manager. The folder goes with the object.
class TestPlaces {
public:
    TestPlaces();
    TestPlaces(const TestPlaces&) = delete;
    TestPlaces& operator=(const TestPlaces&) = delete;

    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path systemBundles() const;
    std::filesystem::path userBundles() const;
    std::filesystem::path plainSources() const;
    // A copy of our manager in an application bundle below the folder, away from the build tree.
    std::filesystem::path managerFile() const;

    // Makes NAME.ds with this Info.plist and the executable "source", a copy of the file.
    void addBundle(const std::filesystem::path& bundleFolder,
                   const std::string& name,
                   const std::string& sourceFile,
                   const std::string& moreEntries = {}) const;
    void addPlain(const std::string& relativeName, const std::string& sourceFile) const;
    std::string log() const; // what the manager has logged so far

private:
    const testing_support::TestFolder temporary_;
    const std::filesystem::path folder_ = temporary_.path();
};

void writeText(const std::filesystem::path& file, const std::string& text); // and its folders
std::string readText(const std::filesystem::path& file);
std::string infoPlist(const std::string& executable, const std::string& moreEntries = {});

} // namespace paperline::test
