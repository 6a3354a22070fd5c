// Decisions about the rows of the page list, without files or pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace paperline {

struct ListingCounters {
    int32_t nextImage = 0; // first path without rows
    int32_t highResolutionPageCount = 0;
    int32_t noDisplayImageShown = 0; // 0 not yet, 1 shown, 2 never again
    bool highResolutionScan = false; // this scan runs at 301 dpi or more
};

enum class ListingDecision {
    silentForGood,   // do nothing
    dropNewPaths,    // remove the new paths
    tellAndDropThem, // show the message and remove the new paths
    list,            // make rows
};

// More high-resolution pages are not listed in one run of the program.
inline constexpr int32_t maximumHighResolutionPages = 50;

// Decides about the paths from `nextImage` to `pathCount`, and counts those that are listed.
ListingDecision decideListing(ListingCounters& counters, size_t pathCount);

// By "pdf" or else "tif" anywhere in the path.
enum class PageFileKind { pdf, tiff, singleImage };
PageFileKind pageFileKind(const std::string& path);

// The name under a thumbnail, numbered from 1 when the file has several pages.
std::string pageCaption(const std::string& displayName, int pageIndex, int pageCount);

// The index after the equal paths that begin at `first`: a file of several pages has one path per
// page, but is listed once.
size_t endOfEqualPaths(std::span<const std::string> paths, size_t first);

// Rows that the user will probably look at after `row`: when it is next to the previous one, the
// row after it in the same direction, then the previous one.
std::vector<size_t> nextRows(size_t row, int64_t previousRow, size_t rowCount);

} // namespace paperline
