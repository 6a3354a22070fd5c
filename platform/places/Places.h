// Every fixed absolute path of the program goes through here.
#pragma once

#include "platform/places/ProcessScratch.h"

#include <string>
#include <vector>

namespace paperline {

// Absolute path of the application bundle (".../Paperline.app"): the folder above "Contents" of the
// running program. Tests set another with setBundlePath.
std::string bundlePath();
std::string resourcePath(); // bundlePath() + "/Contents/Resources"
void setBundlePath(const std::string& path);

// The folder that holds the bundle when it is a build tree (has "TWAIN Data Sources"), else empty.
std::string buildTreeFolder();

// A system place: PAPERLINE_ROOT stands in front.
std::string systemPlace(const std::string& absolutePath);

// A scratch name below /tmp ("/tmp/CorvaneTempImage", "/tmp/1.jpg", the volume path "/tmp" itself)
// in this process's scratch root. Other paths are returned as they are.
std::string scratchPath(const std::string& pathBelowTmp);

enum class ScratchKind {
    sharedTmp, // the window: the fixed names below /tmp, or the user's cache folder when a stranger
               // owns one
    ownFolder, // the command line: a fresh private folder
};
// Chooses the scratch root once, before start. With PAPERLINE_SCRATCH set, "$PAPERLINE_SCRATCH/tmp"
// (made when it is missing) stands where "/tmp" does; without it an own folder goes to TMPDIR.
// Until a root is chosen it is the one of these two. False: no folder could be had; `error` says
// why.
[[nodiscard]] bool chooseScratchRoot(ScratchKind kind, std::string& error);
std::string scratchRoot();
// Removes what chooseScratchRoot(ownFolder) made; called at exit.
void removeOwnScratchRoot();
// The roots of commands that were ended from outside, as far as they can be found from here.
[[nodiscard]] std::vector<ProcessScratch> takeAbandonedScratchRoots();

// $XDG_DATA_HOME/paperline
std::string userDataFolder();
// The folders that hold data source bundles, in search order.
std::vector<std::string> dataSourceFolders();

} // namespace paperline
