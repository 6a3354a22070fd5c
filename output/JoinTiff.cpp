// Joins the staged TIFF pages of a batch into one file in the temporary root.
#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "output/PageJoining.h"
#include "output/PageNaming.h"
#include "output/ScratchNames.h"
#include "platform/files/Files.h"
#include "platform/places/Places.h"

#include <memory>
#include <optional>
#include <utility>

namespace paperline {

namespace {

JoinSteps tracedSteps(const char* operation) {
    const auto line = [operation](const char* text) {
        return [operation, text] { traceLine(operation, text); };
    };
    return {.loading = line("imageRepWithContentsOfFile In"),
            .loaded =
                [operation] {
                    traceLine(operation, "imageRepWithContentsOfFile Out");
                    traceLine(operation, "addRepresentation In");
                },
            .retrying = line("imageRepWithContentsOfFile continue"),
            .added = line("addRepresentation Out")};
}

std::unique_ptr<PageJoiner> openJoiner(const PageCodecs::JoinerFactory& factory) {
    const std::string output = scratchPath(joinedTiffName);
    removePath(output); // a failed join must not leave an older one to be moved
    return factory ? factory(output) : nullptr;
}

} // namespace

std::vector<std::string> AppDelegate::sortArray(std::vector<std::string> names) const {
    TraceScope trace("sortArray");
    return sortedNames(std::move(names));
}

int32_t AppDelegate::mergeTiffImage(const std::string& folder) {
    constexpr const char* operation = "mergeTiffImage";
    TraceScope trace(operation);
    const std::vector<std::string> names = sortArray(deepFolderEntries(folder));
    if (names.empty()) {
        traceLine(operation, "TIFFRepresentationOfImageRepsInArray In");
        traceLine(operation, "TIFFRepresentationOfImageRepsInArray Out");
        return 1;
    }
    const std::unique_ptr<PageJoiner> joiner = openJoiner(pageCodecs().tiffDeclared300Dpi);
    if (!joiner || !joinRetrying(*joiner, folder, names, tracedSteps(operation)))
        return -2;
    traceLine(operation, "TIFFRepresentationOfImageRepsInArray In");
    traceLine(operation, "TIFFRepresentationOfImageRepsInArray Out");
    traceLine(operation, "writeToFile in");
    const bool written = joiner->finish();
    traceLine(operation, "writeToFile Out");
    return written ? 1 : -2;
}

int32_t AppDelegate::mergeTiffImageEx(const std::string& folder) {
    TraceScope trace("mergeTiffImageEx");
    const std::vector<std::string> names = sortArray(deepFolderEntries(folder));
    if (names.empty())
        return -1;
    // Whether the file was written shows in whether it is there.
    const std::unique_ptr<PageJoiner> joiner = openJoiner(pageCodecs().tiffUnchanged);
    if (!joiner)
        return 1;
    if (std::optional<std::vector<std::string>> leftOut =
            joinSkipping(*joiner, folder, names, {})) {
        pagesLeftOut = std::move(*leftOut);
        (void)joiner->finish();
    }
    return 1;
}

} // namespace paperline
