// The program's folders: its bundle, and the scratch root for temporary files. Every fixed absolute
// path goes through here or through StandardFolders.h.
#pragma once

#include "platform/places/ProcessScratch.h"
#include "platform/places/StandardFolders.h"

#include <string>
#include <vector>

namespace paperline {

std::string runningProgram(); // absolute path of its file

// The application bundle (".../Paperline.app") around the running program.
std::string bundlePath();
std::string resourcePath();
void setBundlePath(const std::string& path); // for tests

// The folder around the bundle if it is a build tree (has "TWAIN Data Sources"), else empty.
std::string buildTreeFolder();

// A temporary path ("/tmp", "/tmp/1.jpg") moved to the scratch root. Paths outside /tmp stay.
std::string scratchPath(const std::string& pathBelowTmp);

enum class ScratchKind {
    sharedTmp, // for the window: fixed names in /tmp, or in the user's cache folder if another user
               // owns one of them
    ownFolder, // for the command line: a new private folder
};
// Chooses the scratch root, once, before the application starts. PAPERLINE_SCRATCH moves the root
// to
// "$PAPERLINE_SCRATCH/tmp", which is created; without it own folders go to TMPDIR. Before the
// choice the root is /tmp or its replacement. False: no folder could be created, `error` says why.
[[nodiscard]] bool chooseScratchRoot(ScratchKind kind, std::string& error);
std::string scratchRoot();
// Removes an own folder. Called at exit.
void removeOwnScratchRoot();
// Own folders that ended processes left behind; locked, so that no other process takes them.
[[nodiscard]] std::vector<ProcessScratch> takeAbandonedScratchRoots();

// The folders that hold data source bundles, in search order.
std::vector<std::string> dataSourceFolders();

} // namespace paperline
