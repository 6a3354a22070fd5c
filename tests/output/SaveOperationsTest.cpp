// The writers' operations called directly: image writer, BMP writer, scaling, PDF library,
// metadata.
#include "OutputFixture.h"

#include "codecs/bmp/BmpFile.h"
#include "output/ScratchNames.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "tests/support/Brands.h"

#include <gmock/gmock.h>

namespace paperline {
namespace {

using SaveOperations = OutputTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(SaveOperations, ThePageIsDeclaredInPointsRoundedUp) {
    Density seen;
    pageCodecs().png = [&seen](const BitmapImageRep&, Density density) {
        seen = density;
        return Bytes{1};
    };
    const TestPage page = makeTestPage(2480, 10, 1);
    EXPECT_EQ(
        controller->saveAsJpegWithName(page.image, imageTypePng, inFolder("a.png"), folder, 300),
        1);
    EXPECT_EQ(seen.horizontalDpi, 2480 * 72.0 / 596); // 595.2 points, rounded up
    EXPECT_EQ(seen.verticalDpi, 10 * 72.0 / 3);
    EXPECT_EQ(page.image.size(), (Size{2480, 10})); // the caller's image keeps its size
}

TEST_F(SaveOperations, TheListsCopiesAreDeclaredAt600) {
    Density seen;
    pageCodecs().png = [&seen](const BitmapImageRep&, Density density) {
        seen = density;
        return Bytes{1};
    };
    EXPECT_EQ(
        controller->saveAsJpegWithName_transfer(
            makeTestPage(1200, 600, 1).image, imageTypePng, scratchPath(thumbnailName), folder),
        1);
    EXPECT_EQ(seen, (Density{600, 600}));
    removePath(scratchPath(thumbnailName));
}

TEST_F(SaveOperations, AnImageThatCannotBeEncodedIsMinusOne) {
    EXPECT_EQ(controller->saveAsJpegWithName({}, imageTypeJpeg, inFolder("a.jpg"), folder, 300),
              -1);
    const TestPage page = makeTestPage(2, 2, 8);
    EXPECT_EQ(controller->saveAsJpegWithName(page.image, 1, inFolder("a.jpg"), folder, 300), -1);
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(SaveOperations, TheSpaceTestAsksForTheEncodedLength) {
    pageCodecs().png = [](const BitmapImageRep&, Density) { return Bytes(1000); };
    const TestPage page = makeTestPage(2, 2, 8);
    freeBytes = 999;
    EXPECT_EQ(controller->saveAsJpegWithName(page.image, imageTypePng, inFolder("a"), folder, 300),
              -2);
    EXPECT_FALSE(fileExists(inFolder("a")));
    freeBytes = 1000;
    EXPECT_EQ(controller->saveAsJpegWithName(page.image, imageTypePng, inFolder("a"), folder, 300),
              1);
    EXPECT_EQ(readFile(inFolder("a")), Bytes(1000));
}

TEST_F(SaveOperations, TheBmpEstimateHasTenSpareRows) {
    TestPage page = makeTestPage(10, 10, 24);
    freeBytes = 10 * 20 * 3 - 1;
    const auto save = [&] {
        return controller->saveAsBMPWithName(page.representation->bitmapData().data(),
                                             *page.representation,
                                             300,
                                             300,
                                             inFolder("a.bmp"));
    };
    EXPECT_EQ(save(), -2);
    freeBytes = 10 * 20 * 3;
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(readFile(inFolder("a.bmp"))->size(), 54U + 32 * 10);
}

TEST_F(SaveOperations, AMissingFolderPrintsTheBmpWritersLine) {
    TestPage page = makeTestPage(1, 1, 8);
    testing::internal::CaptureStdout();
    EXPECT_EQ(controller->saveAsBMPWithName(page.representation->bitmapData().data(),
                                            *page.representation,
                                            300,
                                            300,
                                            inFolder("gone/a.bmp")),
              -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "writebmp: file open error\n");
}

TEST_F(SaveOperations, WithoutMemoryForTheCopyThereIsAMessage) {
    const BmpAllocator usual = bmpAllocator;
    bmpAllocator = [](size_t) { return PageMemory(); };
    TestPage page = makeTestPage(1, 1, 8);
    EXPECT_EQ(controller->saveAsBMPWithName(page.representation->bitmapData().data(),
                                            *page.representation,
                                            300,
                                            300,
                                            inFolder("a.bmp")),
              -1);
    bmpAllocator = usual;
    EXPECT_THAT(alerts, SizeIs(1));
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(SaveOperations, OtherDepthsAreNoBmp) {
    const auto deep = BitmapImageRep::make({2, 2, 16, 1, 16, 4});
    EXPECT_EQ(controller->saveAsBMPWithName(
                  deep->bitmapData().data(), *deep, 300, 300, inFolder("a.bmp")),
              -1);
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(SaveOperations, AQuarterForPdf) {
    TestPage page = makeTestPage(2400, 3200, 1);
    page.image.setSize({576, 768});
    const Image quarter = controller->saveAsJpegWithName_scaleSize_4PDF(page.image);
    ASSERT_TRUE(quarter.isValid());
    EXPECT_EQ(quarter.size(), (Size{144, 192}));
    EXPECT_EQ(quarter.representations().front()->pixelsWide(), 144);
    EXPECT_FALSE(controller->saveAsJpegWithName_scaleSize_4PDF({}).isValid());
}

TEST_F(SaveOperations, ScalingGivesExactlyTheTargetSize) {
    const TestPage page = makeTestPage(200, 100, 8);
    const Image scaled = controller->imageByScalingProportionallyToSize({100, 100}, page.image);
    EXPECT_EQ(scaled.size(), (Size{100, 100}));
    const BitmapImageRep& pixels = *scaled.representations().front();
    EXPECT_EQ(pixels.row(24)[3], 0);   // alpha above the drawing
    EXPECT_EQ(pixels.row(25)[3], 255); // its first row
    EXPECT_EQ(pixels.row(74)[3], 255);
    EXPECT_EQ(pixels.row(75)[3], 0);
    EXPECT_FALSE(controller->imageByScalingProportionallyToSize({10, 10}, {}).isValid());
}

TEST_F(SaveOperations, PrintingDeclaresTheImageAt300) {
    Size printed;
    pageCodecs().pdfOfImage = [&printed](const BitmapImageRep&, Size size) {
        printed = size;
        return Bytes{1};
    };
    TestPage page = makeTestPage(2550, 3300, 1);
    controller->savePDF(page.image, inFolder("a.pdf"), true);
    EXPECT_EQ(page.image.size(), (Size{612, 792}));
    EXPECT_EQ(printed, (Size{612, 792}));
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(SaveOperations, AnImageAsPdfHasAQuarterOfItsSize) {
    Size drawn;
    pageCodecs().pdfOfImage = [&drawn](const BitmapImageRep&, Size size) {
        drawn = size;
        return Bytes{'%'};
    };
    TestPage page = makeTestPage(2400, 3200, 1);
    page.image.setSize({576, 768});
    controller->saveAsPDFWithName(page.image, inFolder("a.pdf"));
    EXPECT_EQ(drawn, (Size{144, 192}));
    EXPECT_EQ(textOf(inFolder("a.pdf")), "%");
}

TEST_F(SaveOperations, AnImageThatCannotBeWrittenAsPdfEndsTheProcess) {
    pageCodecs().pdfOfImage = [](const BitmapImageRep&, Size) { return Bytes{'%'}; };
    const TestPage page = makeTestPage(40, 40, 8);
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_EXIT(controller->saveAsPDFWithName(page.image, inFolder("gone/a.pdf")),
                testing::ExitedWithCode(1),
                "");
}

class ScriptedSource : public PdfSource {
public:
    explicit ScriptedSource(int pages) : pages_(pages) {}
    int pageCount() const override { return pages_; }
    Rect mediaBox(int page) const override { return {0, 0, 100.0 * page, 50}; }

private:
    int pages_;
};

class ScriptedContext : public PdfContext {
public:
    explicit ScriptedContext(std::vector<std::string>& calls) : calls_(calls) {}
    void beginPage(const Rect& box) override {
        calls_.push_back("begin " + std::to_string(static_cast<int>(box.width)));
    }
    void drawPage(const PdfSource&, int page) override {
        calls_.push_back("draw " + std::to_string(page));
    }
    void endPage() override { calls_.push_back("end"); }
    void close() override { calls_.push_back("close"); }

private:
    std::vector<std::string>& calls_;
};

TEST_F(SaveOperations, TwoDocumentsAreDrawnIntoAThird) {
    std::vector<std::string> calls;
    pageCodecs().openPdf = [](const std::string& path) -> std::unique_ptr<PdfSource> {
        if (path == "missing")
            return nullptr;
        return std::make_unique<ScriptedSource>(path == "two" ? 2 : 1);
    };
    pageCodecs().createPdfContext = [&calls](const std::string&) {
        return std::make_unique<ScriptedContext>(calls);
    };
    controller->appendPdf("two", "one", inFolder("out.pdf"));
    EXPECT_THAT(calls,
                ElementsAre("begin 100",
                            "draw 1",
                            "end",
                            "begin 200",
                            "draw 2",
                            "end",
                            "begin 100",
                            "draw 1",
                            "end",
                            "close"));
    calls.clear();
    controller->appendPdf("missing", "one", inFolder("out.pdf"));
    EXPECT_THAT(calls, ElementsAre("begin 100", "draw 1", "end", "close"));
}

TEST_F(SaveOperations, AppendingToAContextRepeatsTheFirstPageWithoutEndingIt) {
    std::vector<std::string> calls;
    ScriptedContext context(calls);
    pageCodecs().openPdf = [](const std::string& path) -> std::unique_ptr<PdfSource> {
        if (path == "missing")
            return nullptr;
        return std::make_unique<ScriptedSource>(path == "three" ? 3 : 0);
    };
    controller->appendPdfAtURL("missing", context);
    controller->appendPdfAtURL("empty", context);
    EXPECT_THAT(calls, IsEmpty());
    controller->appendPdfAtURL("three", context);
    EXPECT_THAT(calls,
                ElementsAre("begin 100", "draw 1", "begin 100", "draw 1", "begin 100", "draw 1"));
}

TEST_F(SaveOperations, MetadataIsPatchedForTwoBrandsOnly) {
    const std::string pdf = "/Producer 12 0 R\n12 0 obj\n(" + std::string(34, 'p') + ")\n";
    std::vector<std::string> calls;
    pageCodecs().setMakeAndModel =
        [&calls](const std::string&, const std::string& make, const std::string& model) {
            calls.push_back(make + "|" + model);
            return true;
        };
    for (const uint32_t brand : testing_support::everyBrand) {
        const bool patches = brand == 2 || brand == 3;
        gBrandNumber = brand;
        calls.clear();
        touch(inFolder("a.pdf"), pdf);
        controller->replacePDFProducer(inFolder("a.pdf"), "Alpha 3000 Duplex");
        controller->replaceExifInfo(inFolder("a.jpg"), "Alpha 3000 Duplex");
        const std::string text = textOf(inFolder("a.pdf"));
        EXPECT_EQ(text.size(), pdf.size());
        EXPECT_EQ(text != pdf, patches) << brand;
        EXPECT_EQ(text.find("(3000 Duplex" + std::string(23, '\0') + ")") != std::string::npos,
                  patches);
        EXPECT_THAT(calls, SizeIs(patches ? 1 : 0)) << brand;
        if (patches) {
            EXPECT_EQ(calls[0], "Alpha |3000 Duplex");
        }
    }
}

TEST_F(SaveOperations, AMissingPdfIsNotPatched) {
    gBrandNumber = 3;
    controller->replacePDFProducer(inFolder("missing.pdf"), "Alpha 3000");
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(SaveOperations, WhichFormatsGetTheScannersName) {
    gBrandNumber = 2;
    std::vector<std::string> patched;
    pageCodecs().jpeg = pageCodecs().png = pageCodecs().gif =
        pageCodecs().tiff = [](const BitmapImageRep&, Density) { return Bytes{1}; };
    pageCodecs().tiffDeclared300Dpi = pageCodecs().tiffUnchanged = pageCodecs().pdf =
        listingJoiner();
    pageCodecs().setMakeAndModel =
        [&patched](const std::string& path, const std::string&, const std::string&) {
            patched.push_back(lastPathComponent(path));
            return true;
        };
    for (int32_t code = formatBmp; code <= formatPng; ++code) {
        controller->profileFileformatSelect = code;
        controller->currentPage = 50 + static_cast<uint32_t>(code);
        firstPageOfBatch = true;
        EXPECT_EQ(saveGrey(), 0);
    }
    EXPECT_THAT(patched, ElementsAre("Image_00051.jpg", "Image_00055.tif", "Image_00002.tif"));
}

} // namespace
} // namespace paperline
