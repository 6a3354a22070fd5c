// Finds the files that may be data sources, without loading any.
#pragma once

#include <string>
#include <vector>

namespace paperline::dsm {

struct SearchPlaces {
    std::vector<std::string> bundleFolders; // hold NAME.ds folders
    std::string plainFolder;                // holds *.ds files, in folders below it too
};

struct SourceFile {
    std::string path;      // the shared object
    bool fallback = false; // listed only when nothing else is there
};

// The places of this user and of the build tree that the manager's own file lies in, if any.
SearchPlaces searchPlaces();

// The folder that holds an application bundle, from the path of a library in its
// Contents/Frameworks; empty for any other path.
std::string folderOfBundleAround(const std::string& libraryPath);

// Bundles in the order of their folders, then plain files; by name within a folder. A bundle that
// cannot be used is left out with a line in the log. A file found twice counts once.
std::vector<SourceFile> findSourceFiles(const SearchPlaces& places);

} // namespace paperline::dsm
