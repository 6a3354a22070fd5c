#include "viewer/PageListRules.h"

namespace paperline {

ListingDecision decideListing(ListingCounters& counters, size_t pathCount) {
    constexpr int32_t neverAgain = 2;
    constexpr int32_t shown = 1;
    if (counters.noDisplayImageShown == neverAgain && counters.highResolutionScan)
        return ListingDecision::silentForGood;
    if (!counters.highResolutionScan)
        return ListingDecision::list;

    const auto newPaths =
        static_cast<int32_t>(static_cast<int64_t>(pathCount) - counters.nextImage);
    counters.highResolutionPageCount += newPaths;
    if (counters.noDisplayImageShown == shown) {
        counters.highResolutionPageCount -= newPaths;
        return ListingDecision::dropNewPaths;
    }
    if (counters.highResolutionPageCount > maximumHighResolutionPages) {
        counters.highResolutionPageCount -= newPaths;
        return ListingDecision::tellAndDropThem;
    }
    return ListingDecision::list;
}

PageFileKind pageFileKind(const std::string& path) {
    if (path.find("pdf") != std::string::npos)
        return PageFileKind::pdf;
    if (path.find("tif") != std::string::npos)
        return PageFileKind::tiff;
    return PageFileKind::singleImage;
}

std::string pageCaption(const std::string& displayName, int pageIndex, int pageCount) {
    if (pageCount == 1)
        return displayName;
    return displayName + "(" + std::to_string(pageIndex + 1) + ")";
}

size_t endOfEqualPaths(std::span<const std::string> paths, size_t first) {
    size_t end = first + 1;
    while (end < paths.size() && paths[end] == paths[first])
        ++end;
    return end;
}

std::vector<size_t> nextRows(size_t row, int64_t previousRow, size_t rowCount) {
    const auto here = static_cast<int64_t>(row);
    const int64_t step = here - previousRow;
    std::vector<size_t> rows;
    if (step != 1 && step != -1)
        return rows;
    for (const int64_t next : {here + step, here - step})
        if (next >= 0 && next < static_cast<int64_t>(rowCount))
            rows.push_back(static_cast<size_t>(next));
    return rows;
}

} // namespace paperline
