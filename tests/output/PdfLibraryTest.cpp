// The PDF operations without a caller, with real files, read by tools that are not ours.
#include "OutputFixture.h"
#include "ToolOutput.h"
#include "output/ScratchNames.h"
#include "platform/files/Files.h"

namespace paperline {
namespace {

class PdfLibrary : public OutputTest {
protected:
    // A document with a page of each size, in points.
    std::string putDocument(const std::string& name, const std::vector<Size>& pages) const {
        const std::unique_ptr<PdfContext> context = pageCodecs().createPdfContext(inFolder(name));
        for (const Size& size : pages) {
            context->beginPage({0, 0, size.width, size.height});
            context->endPage();
        }
        context->close();
        return inFolder(name);
    }
    // The pages' sizes, one a line; what is wrong with the document stands before them.
    std::string pagesOf(const std::string& name) const {
        const std::string path = "'" + inFolder(name) + "'";
        return outputOf("qpdf --check " + path + " 2>&1 >/dev/null") +
               outputOf("pdfinfo -f 1 -l 99 " + path +
                        " | sed -n 's/^Page .*size: *\\([0-9.]* x [0-9.]*\\) pts.*/\\1/p'");
    }
};

TEST_F(PdfLibrary, TwoDocumentsBecomeOne) {
    const std::string first = putDocument("first.pdf", {{100, 200}, {300, 50}});
    const std::string second = putDocument("second.pdf", {{70, 80}});
    controller->appendPdf(first, second, inFolder("both.pdf"));
    EXPECT_EQ(pagesOf("both.pdf"), "100 x 200\n300 x 50\n70 x 80\n");
    controller->appendPdf(inFolder("missing.pdf"), second, inFolder("one.pdf"));
    EXPECT_EQ(pagesOf("one.pdf"), "70 x 80\n");
}

TEST_F(PdfLibrary, AppendingDrawsTheFirstPageForEachPage) {
    const std::string path = putDocument("three.pdf", {{100, 200}, {300, 50}, {70, 80}});
    const std::unique_ptr<PdfContext> context = pageCodecs().createPdfContext(inFolder("out.pdf"));
    ASSERT_NE(context, nullptr);
    controller->appendPdfAtURL(path, *context);
    controller->appendPdfAtURL(inFolder("missing.pdf"), *context);
    context->close();
    EXPECT_EQ(pagesOf("out.pdf"), "100 x 200\n100 x 200\n100 x 200\n");
}

TEST_F(PdfLibrary, AnImageBecomesAPageOfAQuarterOfItsSize) {
    TestPage page = makeTestPage(2400, 3200, 1);
    page.image.setSize({576, 768});
    controller->saveAsPDFWithName(page.image, inFolder("image.pdf"));
    EXPECT_EQ(pagesOf("image.pdf"), "144 x 192\n");
    EXPECT_EQ(outputOf("pdfimages -list '" + inFolder("image.pdf") +
                       "' | awk 'NR > 2 { print $4, $5, $8 }'"),
              "2400 3200 1\n");
}

TEST_F(PdfLibrary, PrintingWritesNothing) {
    TestPage page = makeTestPage(2550, 3300, 1);
    controller->savePDF(page.image, inFolder("a.pdf"), false);
    EXPECT_EQ(page.image.size(), (Size{612, 792}));
    EXPECT_TRUE(folderEntries(folder).empty());
}

TEST_F(PdfLibrary, AFolderWithoutReadablePicturesIsAnEmptyDocument) {
    touch(staged("Image_00001.jpg"), "no picture");
    EXPECT_EQ(controller->CreatePDF(scratchPath(stagingFolderName) + "/", inFolder("a.pdf")), 1);
    EXPECT_EQ(outputOf("qpdf --show-npages '" + inFolder("a.pdf") + "' 2>&1"), "0\n");
}

TEST_F(PdfLibrary, WithoutAWindowServerTheProcessEnds) {
    EXPECT_EQ(outputOf(std::string("'") + NO_WINDOW_PROBE + "' '" + inFolder("a.pdf") +
                       "' 2>&1; echo $?"),
              "Failed to make a connection to the window server\n1\n");
    EXPECT_TRUE(folderEntries(folder).empty());
}

} // namespace
} // namespace paperline
