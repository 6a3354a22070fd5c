// Which saved files become rows of the page list: the decisions, without files or pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace paperline {

// The process-wide counters as one value.
struct ListingCounters {
    int32_t nextImage = 0; // first path without rows
    int32_t highResolutionPageCount = 0;
    int32_t noDisplayImageShown = 0; // 0 not yet, 1 shown, 2 never again
    bool highResolutionScan = false; // this scan runs at 301 dpi or more
};

enum class ListingDecision {
    silentForGood,   // nothing happens, nothing is dropped
    dropNewPaths,    // the new paths leave the list
    tellAndDropThem, // the message first, then the same
    list,            // make rows
};

// High-resolution pages of a run that are listed at the most.
inline constexpr int32_t maximumHighResolutionPages = 50;

// Decides for the paths from `nextImage` to `pathCount` and keeps the page count in step: dropped
// paths are not counted.
ListingDecision decideListing(ListingCounters& counters, size_t pathCount);

// By the path alone, wherever in it the letters stand; "pdf" is looked for first.
enum class PageFileKind { pdf, tiff, singleImage };
PageFileKind pageFileKind(const std::string& path);

// The name under a thumbnail: the file's name without extension, numbered from 1 when the file has
// several pages.
std::string pageCaption(const std::string& displayName, int pageIndex, int pageCount);

// One past the last path of the run of equal paths that begins at `first`. A file of several pages
// stands in the list of paths once per page; its pages are listed once.
size_t endOfEqualPaths(std::span<const std::string> paths, size_t first);

// Rows whose pages the user will probably look at after that of `row`: who went to it from the row
// beside it goes on in the same direction, or back. The likelier first; none after a leap.
std::vector<size_t> nextRows(size_t row, int64_t previousRow, size_t rowCount);

} // namespace paperline
