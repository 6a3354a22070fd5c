#include "output/JoinedFiles.h"

#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "output/PageCodecs.h"
#include "output/PageJoining.h"
#include "output/ScratchNames.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/places/Places.h"

#include <memory>
#include <optional>
#include <utility>

namespace paperline {

namespace {

std::vector<std::string> tracedOrder(std::vector<std::string> names) {
    TraceScope trace("sortArray");
    return sortedNames(std::move(names));
}

std::unique_ptr<PageJoiner> openJoiner(const PageCodecs::JoinerFactory& factory,
                                       const char* scratchName) {
    const std::string path = scratchPath(scratchName);
    removePath(path); // a failed join must not leave an older file to be moved
    return factory(path);
}

// A page's document is small and passes through memory, so that no page waits for the disk.
PageWrite publish(const std::string& built, const PageWriteTarget& target) {
    const std::optional<std::vector<uint8_t>> bytes = readFile(built);
    removePath(built);
    if (!bytes)
        return {PageWriteResult::notOpened, target.path, "the document's draft cannot be read"};
    return writePageFile(target, *bytes);
}

} // namespace

JoinOutcome joinTiffAt300Dpi(const std::string& folder) {
    constexpr const char* operation = "mergeTiffImage";
    TraceScope trace(operation);
    const std::vector<std::string> names = tracedOrder(deepFolderEntries(folder));
    const auto joiner = openJoiner(pageCodecs().tiffDeclared300Dpi, joinedTiffName);
    if (!joinPages(*joiner,
                   folder,
                   names,
                   UnreadablePages::retried,
                   {.operation = operation,
                    .loading = "imageRepWithContentsOfFile In",
                    .unreadable = "imageRepWithContentsOfFile continue",
                    .added = {"imageRepWithContentsOfFile Out",
                              "addRepresentation In",
                              "addRepresentation Out"}}))
        return {-2, joiner->failure(), {}};
    traceLine(operation, "TIFFRepresentationOfImageRepsInArray In");
    traceLine(operation, "TIFFRepresentationOfImageRepsInArray Out");
    if (names.empty())
        return {1, {}, {}};
    traceLine(operation, "writeToFile in");
    const bool isWritten = joiner->finish();
    traceLine(operation, "writeToFile Out");
    return isWritten ? JoinOutcome{1, {}, {}} : JoinOutcome{-2, joiner->failure(), {}};
}

JoinOutcome joinTiffUnchanged(const std::string& folder) {
    TraceScope trace("mergeTiffImageEx");
    const std::vector<std::string> names = tracedOrder(deepFolderEntries(folder));
    if (names.empty())
        return {-1, {}, {}};
    const auto joiner = openJoiner(pageCodecs().tiffUnchanged, joinedTiffName);
    auto leftOut = joinPages(*joiner, folder, names, UnreadablePages::leftOut);
    if (!leftOut || !joiner->finish())
        return {1, joiner->failure(), {}};
    return {1, {}, std::move(*leftOut)};
}

JoinOutcome joinPdf(const std::string& folder) {
    constexpr const char* operation = "CreateMPDF";
    TraceScope trace(operation);
    const std::vector<std::string> names = tracedOrder(deepFolderEntries(folder));
    const auto joiner = openJoiner(pageCodecs().pdf, joinedPdfName);
    if (!joinPages(*joiner,
                   folder,
                   names,
                   UnreadablePages::retried,
                   {.operation = operation,
                    .loading = "initWithContentsOfFile In ",
                    .unreadable = "initWithContentsOfFile continue",
                    .added = {"initWithContentsOfFile Out",
                              "PDFPage alloc In ",
                              "PDFPage alloc Out",
                              "insertPage Out"}}))
        return {-2, joiner->failure(), {}};
    traceLine(operation, "writeToFile In");
    const bool isWritten = names.empty() || joiner->finish();
    traceLine(operation, "writeToFile Out");
    return isWritten ? JoinOutcome{1, {}, {}} : JoinOutcome{-2, joiner->failure(), {}};
}

SaveOutcome writePdf(const std::string& folder, const PageWriteTarget& target) {
    constexpr const char* operation = "CreatePDF";
    TraceScope trace(operation);
    const auto joiner = openJoiner(pageCodecs().pdf, joinedPdfName);
    const auto leftOut = joinPages(*joiner,
                                   folder,
                                   deepFolderEntries(folder),
                                   UnreadablePages::leftOut,
                                   {.operation = operation,
                                    .loading = "initWithContentsOfFile In",
                                    .unreadable = "initWithContentsOfFile continue",
                                    .added = {"initWithContentsOfFile Out", "initWithImage In"}});
    traceLine(operation, "writeToFile in");
    const PageWrite written =
        leftOut && joiner->finish()
            ? publish(scratchPath(joinedPdfName), target)
            : PageWrite{PageWriteResult::notOpened, target.path, joiner->failure()};
    traceLine(operation, "writeToFile Out");
    if (written.result != PageWriteResult::complete)
        return {-2, written};
    if (leftOut->empty())
        return {1, written};
    // The document is written without the page.
    return {1, {PageWriteResult::incomplete, written.path, joiner->failure()}};
}

std::vector<std::string> AppDelegate::sortArray(std::vector<std::string> names) const {
    return tracedOrder(std::move(names));
}

int32_t AppDelegate::mergeTiffImage(const std::string& folder) {
    return joinTiffAt300Dpi(folder).code;
}

int32_t AppDelegate::mergeTiffImageEx(const std::string& folder) {
    return joinTiffUnchanged(folder).code;
}

int32_t AppDelegate::CreateMPDF(const std::string& folder) {
    return joinPdf(folder).code;
}

int32_t AppDelegate::CreatePDF(const std::string& folder, const std::string& outFileName) {
    return writePdf(folder, pageTarget(outFileName)).code;
}

} // namespace paperline
