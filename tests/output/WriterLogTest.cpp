// What the writers, the joiners and the patches say: the lines of the debug trace, and those for
// the console.
#include "OutputFixture.h"

#include "base/CvOutputLog.h"
#include "output/ScratchNames.h"
#include "platform/files/Files.h"
#include "tests/app/TraceReading.h"

#include <gmock/gmock.h>

namespace paperline {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

class WriterTrace : public OutputTest {
protected:
    void SetUp() override {
        OutputTest::SetUp();
        PageCodecs& codecs = pageCodecs();
        codecs.jpeg = codecs.tiff = codecs.gif =
            codecs.png = [](const BitmapImageRep&, Density) { return Bytes{'p'}; };
        codecs.pdf = codecs.tiffDeclared300Dpi =
            codecs.tiffUnchanged = [this](const std::string& path) {
                return std::make_unique<FailingOnceJoiner>(path, failures);
            };
        log_.debugLevel = 1;
        log_.logPath = traceFolder_.path() + "/trace.txt";
        gOutputLog = &log_;
    }
    void TearDown() override {
        gOutputLog = before_;
        OutputTest::TearDown();
    }
    std::vector<std::string> takeTrace() {
        std::vector<std::string> entries = test::readTrace(log_.logPath);
        removePath(log_.logPath);
        return entries;
    }
    static std::string staging() { return scratchPath(stagingFolderName); }

    int failures = 0; // pages that cannot be read before one can

private:
    class FailingOnceJoiner : public ListingJoiner {
    public:
        FailingOnceJoiner(std::string path, int& failures)
            : ListingJoiner(std::move(path)), failures_(failures) {}
        Added add(const std::string& pageFile) override {
            return failures_-- > 0 ? Added::unreadable : ListingJoiner::add(pageFile);
        }

    private:
        int& failures_;
    };

    const testing_support::TestFolder traceFolder_;
    CvOutputLog log_;
    CvOutputLog* const before_ = gOutputLog;
};

TEST_F(WriterTrace, OfADocument) {
    touch(staged("1"));
    EXPECT_EQ(controller->CreatePDF(staging(), inFolder("a.pdf")), 1);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: CreatePDF",
                            "initWithContentsOfFile In 1: CreatePDF",
                            "initWithContentsOfFile Out 1: CreatePDF",
                            "initWithImage In 1: CreatePDF",
                            "writeToFile in 1: CreatePDF",
                            "writeToFile Out 1: CreatePDF",
                            "Out 1: CreatePDF"));
    failures = 1;
    EXPECT_EQ(controller->CreatePDF(staging(), inFolder("b.pdf")), 1);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: CreatePDF",
                            "initWithContentsOfFile In 1: CreatePDF",
                            "initWithContentsOfFile continue 1: CreatePDF",
                            "writeToFile in 1: CreatePDF",
                            "writeToFile Out 1: CreatePDF",
                            "Out 1: CreatePDF"));
}

TEST_F(WriterTrace, OfADocumentOfManyPages) {
    touch(staged("1"));
    failures = 1;
    EXPECT_EQ(controller->CreateMPDF(staging()), 1);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: CreateMPDF",
                            "In  1: sortArray",
                            "Out 1: sortArray",
                            "initWithContentsOfFile In  1: CreateMPDF",
                            "initWithContentsOfFile continue 1: CreateMPDF",
                            "initWithContentsOfFile In  1: CreateMPDF",
                            "initWithContentsOfFile Out 1: CreateMPDF",
                            "PDFPage alloc In  1: CreateMPDF",
                            "PDFPage alloc Out 1: CreateMPDF",
                            "insertPage Out 1: CreateMPDF",
                            "writeToFile In 1: CreateMPDF",
                            "writeToFile Out 1: CreateMPDF",
                            "Out 1: CreateMPDF"));
}

TEST_F(WriterTrace, OfTheTiffJoiners) {
    EXPECT_EQ(controller->mergeTiffImage(staging()), 1);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: mergeTiffImage",
                            "In  1: sortArray",
                            "Out 1: sortArray",
                            "TIFFRepresentationOfImageRepsInArray In 1: mergeTiffImage",
                            "TIFFRepresentationOfImageRepsInArray Out 1: mergeTiffImage",
                            "Out 1: mergeTiffImage"));
    touch(staged("1"));
    failures = 1;
    EXPECT_EQ(controller->mergeTiffImage(staging()), 1);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: mergeTiffImage",
                            "In  1: sortArray",
                            "Out 1: sortArray",
                            "imageRepWithContentsOfFile In 1: mergeTiffImage",
                            "imageRepWithContentsOfFile continue 1: mergeTiffImage",
                            "imageRepWithContentsOfFile In 1: mergeTiffImage",
                            "imageRepWithContentsOfFile Out 1: mergeTiffImage",
                            "addRepresentation In 1: mergeTiffImage",
                            "addRepresentation Out 1: mergeTiffImage",
                            "TIFFRepresentationOfImageRepsInArray In 1: mergeTiffImage",
                            "TIFFRepresentationOfImageRepsInArray Out 1: mergeTiffImage",
                            "writeToFile in 1: mergeTiffImage",
                            "writeToFile Out 1: mergeTiffImage",
                            "Out 1: mergeTiffImage"));
    EXPECT_EQ(controller->mergeTiffImageEx(staging()), 1);
    EXPECT_THAT(takeTrace(),
                ElementsAre("In  1: mergeTiffImageEx",
                            "In  1: sortArray",
                            "Out 1: sortArray",
                            "Out 1: mergeTiffImageEx"));
}

TEST_F(WriterTrace, OfEveryFormat) {
    for (const FileFormat& format : fileFormats) {
        controller->profileFileformatSelect = format.code;
        firstPageOfBatch = true;
        EXPECT_EQ(saveGrey(), 0);
        const std::string label = format.logLabel;
        EXPECT_THAT(takeTrace(),
                    IsSupersetOf<std::string>({label + (format.code == formatBmp ? " In" : " In ") +
                                                   " 1: saveXferDatatoMedia",
                                               label + " Out 1: saveXferDatatoMedia",
                                               "add to ImageFilePath 1: saveXferDatatoMedia"}));
    }
    freeBytes = 0;
    controller->profileFileformatSelect = formatGif;
    EXPECT_EQ(saveGrey(), -2);
    EXPECT_THAT(takeTrace(), Not(Contains("FILEFORMAT_GIF Out 1: saveXferDatatoMedia")));
}

class ConsoleLines : public OutputTest {
protected:
    std::string linesOfPatch(const std::string& pdf) {
        gBrandNumber = 2;
        touch(inFolder("a.pdf"), pdf);
        testing::internal::CaptureStderr();
        controller->replacePDFProducer(inFolder("a.pdf"), "Alpha 3000 Duplex");
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(ConsoleLines, OfAPatchedProducer) {
    const std::string head = "/Producer 12 0 R\n12 0 obj\n(";
    const std::string lines = "Bytes found at position 1\nfileByte = 12 0 R\n12\n"
                              "Bytes found at position 17\nfileByte2 = ";
    EXPECT_EQ(linesOfPatch(head + std::string(34, 'p') + ")more"),
              lines + std::string(34, 'p') + ")\n");
    // As the platform prints a text: up to the first zero byte.
    EXPECT_EQ(linesOfPatch(textOf(inFolder("a.pdf"))), lines + "3000 Duplex\n");
}

TEST_F(ConsoleLines, OfAProducerThatIsNotFound) {
    EXPECT_EQ(linesOfPatch("%PDF"), "Bytes not found\n");
    EXPECT_EQ(linesOfPatch("/Producer 4 0 R\n5 0 obj\n(x)"),
              "Bytes found at position 1\nfileByte = 4 0 R\n5 0\nBytes not found\n");
    EXPECT_EQ(textOf(inFolder("a.pdf")), "/Producer 4 0 R\n5 0 obj\n(x)");
}

TEST_F(ConsoleLines, OfAnImageThatCannotBeEncoded) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(controller->saveAsJpegWithName({}, imageTypeJpeg, inFolder("a.jpg"), folder, 300),
              -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception : ImageWriterException, the image has no representation\n");
    pageCodecs().jpeg = [](const BitmapImageRep&, Density) { return std::nullopt; };
    testing::internal::CaptureStderr();
    EXPECT_EQ(controller->saveAsJpegWithName_transfer(
                  makeTestPage(2, 2, 8).image, imageTypeJpeg, inFolder("a.jpg"), folder),
              -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception : ImageWriterException, the page cannot be encoded\n");
}

using FreeSpace = OutputTest;

// Final files ask for room in the save folder, staged pages for room where they are staged.
TEST_F(FreeSpace, IsThatOfTheVolumeWrittenTo) {
    std::vector<std::string> asked;
    host().freeSpaceBytes = [&asked](const std::string& path) {
        asked.push_back(path);
        return std::optional<int64_t>(int64_t{1} << 40);
    };
    const std::string staging = scratchPath(scratchVolume);
    ASSERT_NE(staging, folder);
    for (const FileFormat& format : fileFormats) {
        controller->profileFileformatSelect = format.code;
        firstPageOfBatch = true;
        asked.clear();
        EXPECT_EQ(saveGrey(), 0);
        EXPECT_THAT(asked, ElementsAre(format.isStaged() ? staging : folder)) << format.commandName;
    }
}

} // namespace
} // namespace paperline
