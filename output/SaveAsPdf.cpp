// Assembles PDF documents from staged JPEG pages.
#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "output/PageJoining.h"
#include "output/PageNaming.h"
#include "output/ScratchNames.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/places/Places.h"

#include <functional>
#include <memory>
#include <optional>

namespace paperline {

namespace {

std::function<void()> traced(const char* operation, const char* text) {
    return [operation, text] { traceLine(operation, text); };
}

std::unique_ptr<PageJoiner> openDocument(const std::string& output) {
    const PageCodecs::JoinerFactory& factory = pageCodecs().pdf;
    return factory ? factory(output) : nullptr;
}

// The document is built in the temporary root and put whole under the user's name. A page's
// document is small; it passes through memory so that no page waits for the disk.
PageWrite
publishDocument(AppDelegate& controller, const std::string& built, const std::string& outFileName) {
    const std::optional<std::vector<uint8_t>> bytes = readFile(built);
    removePath(built);
    if (!bytes)
        return {};
    return writePageFile(
        {outFileName, isScratchFile(outFileName, scratchPath), controller.nextPagePath}, *bytes);
}

} // namespace

int32_t AppDelegate::CreatePDF(const std::string& folder, const std::string& outFileName) {
    constexpr const char* operation = "CreatePDF";
    TraceScope trace(operation);
    lastPageWrite = {};
    const std::string built = scratchPath(joinedPdfName);
    removePath(built);
    const std::unique_ptr<PageJoiner> document = openDocument(built);
    if (!document)
        return -2;
    const JoinSteps steps{.loading = traced(operation, "initWithContentsOfFile In"),
                          .loaded =
                              [operation] {
                                  traceLine(operation, "initWithContentsOfFile Out");
                                  traceLine(operation, "initWithImage In");
                              },
                          .retrying = traced(operation, "initWithContentsOfFile continue"),
                          .added = {}};
    const auto leftOut = joinSkipping(*document, folder, deepFolderEntries(folder), steps);
    traceLine(operation, "writeToFile in");
    if (leftOut && document->finish())
        lastPageWrite = publishDocument(*this, built, outFileName);
    traceLine(operation, "writeToFile Out");
    if (lastPageWrite.result != PageWriteResult::complete)
        return -2;
    if (!leftOut->empty()) // written as it should be, but without a page
        lastPageWrite.result = PageWriteResult::incomplete;
    return 1;
}

int32_t AppDelegate::CreateMPDF(const std::string& folder) {
    constexpr const char* operation = "CreateMPDF";
    TraceScope trace(operation);
    const std::string output = scratchPath(joinedPdfName);
    removePath(output);
    const std::vector<std::string> names = sortArray(deepFolderEntries(folder));
    const std::unique_ptr<PageJoiner> document = names.empty() ? nullptr : openDocument(output);
    const JoinSteps steps{.loading = traced(operation, "initWithContentsOfFile In "),
                          .loaded =
                              [operation] {
                                  traceLine(operation, "initWithContentsOfFile Out");
                                  traceLine(operation, "PDFPage alloc In ");
                                  traceLine(operation, "PDFPage alloc Out");
                              },
                          .retrying = traced(operation, "initWithContentsOfFile continue"),
                          .added = traced(operation, "insertPage Out")};
    if (!names.empty() && (!document || !joinRetrying(*document, folder, names, steps)))
        return -2;
    traceLine(operation, "writeToFile In");
    const bool written = !document || document->finish();
    traceLine(operation, "writeToFile Out");
    return written ? 1 : -2;
}

} // namespace paperline
