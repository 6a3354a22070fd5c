// PDF operations of the controller that the scanning flow does not call.
#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "output/PageCodecs.h"
#include "output/Resolution.h"
#include "platform/files/FileContent.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

namespace paperline {

namespace {

constexpr int32_t printDpi = 300;
constexpr int failureStatus = 1;

std::unique_ptr<PdfSource> openPdf(const std::string& path) {
    return pageCodecs().openPdf ? pageCodecs().openPdf(path) : nullptr;
}

void drawAllPages(const std::string& path, PdfContext& context) {
    const std::unique_ptr<PdfSource> source = openPdf(path);
    for (int page = 1; source && page <= source->pageCount(); ++page) {
        context.beginPage(source->mediaBox(page));
        context.drawPage(*source, page);
        context.endPage();
    }
}

// The image in a view of that size, as PDF data.
std::optional<std::vector<uint8_t>> pdfOfView(const Image& image, Size viewSize) {
    if (!image.isValid() || !pageCodecs().pdfOfImage)
        return std::nullopt;
    return pageCodecs().pdfOfImage(*image.representations().front(), viewSize);
}

} // namespace

void AppDelegate::appendPdf(const std::string& pdfFile,
                            const std::string& appendPdfFile,
                            const std::string& OutputFileName) {
    TraceScope trace("appendPdf");
    const std::unique_ptr<PdfContext> context =
        pageCodecs().createPdfContext ? pageCodecs().createPdfContext(OutputFileName) : nullptr;
    if (!context)
        return;
    drawAllPages(pdfFile, *context);
    drawAllPages(appendPdfFile, *context);
    context->close();
}

// Draws the first page as often as there are pages, and ends none of them.
void AppDelegate::appendPdfAtURL(const std::string& path, PdfContext& toContext) {
    TraceScope trace("appendPdfAtURL");
    const std::unique_ptr<PdfSource> source = openPdf(path);
    if (!source)
        return;
    for (int count = source->pageCount(); count > 0; --count) {
        toContext.beginPage(source->mediaBox(1));
        toContext.drawPage(*source, 1);
    }
}

void AppDelegate::saveAsPDFWithName(const Image& image, const std::string& fileName) {
    TraceScope trace("saveAsPDFWithName");
    if (QGuiApplication::instance() == nullptr) {
        (void)std::fputs("Failed to make a connection to the window server\n", stderr);
        std::exit(failureStatus);
    }
    const Size viewSize = saveAsJpegWithName_scaleSize_4PDF(image).size();
    const std::optional<std::vector<uint8_t>> data = pdfOfView(image, viewSize);
    if (!data || !writeFile(fileName, *data))
        std::exit(failureStatus);
}

void AppDelegate::savePDF(Image& image, const std::string& /*fileName*/, bool /*multipage*/) {
    TraceScope trace("savePDF");
    image.setSize(pointsOfPage(image.size(), printDpi));
    (void)pdfOfView(image, image.size()); // printed into memory, and dropped
}

} // namespace paperline
