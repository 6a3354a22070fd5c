// Staging, joining and placing multi-page files, with joiners that list what they were given.
#include "MultiPageFixture.h"

#include "output/ScratchNames.h"
#include "platform/files/Files.h"

#include <gmock/gmock.h>

#include <unistd.h>

namespace paperline {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(MultiPage, ATiffBatchBecomesOneFileAndACopyForTheList) {
    controller->currentPage = 7;
    saveThree(formatMultiPageTiff);
    const std::string listCopy = scratchPath(scratchRootName) + "/Image_00007.tif";
    EXPECT_THAT(controller->imageFilePath, SizeIs(3));
    EXPECT_THAT(controller->imageFilePath, Each(listCopy));
    EXPECT_EQ(multiPageTargetPath, inFolder("Image_00007.tif"));
    EXPECT_EQ(controller->currentMultiPage, 4U);
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_EQ(controller->currentPage, 8U);
    const std::string pages = "Image_00001.tif\nImage_00002.tif\nImage_00003.tif\n";
    EXPECT_EQ(textOf(inFolder("Image_00007.tif")), pages);
    EXPECT_EQ(textOf(listCopy), pages);
    EXPECT_THAT(folderEntries(folder), ElementsAre("Image_00007.tif"));
}

// The counter starts anew with the program, but a crash leaves the temporary root behind.
TEST_F(MultiPage, AnOlderCopyForTheListMakesWay) {
    const std::string listCopy = scratchPath(scratchRootName) + "/Image_00001.tif";
    touch(listCopy, "older");
    saveThree(formatMultiPageTiff);
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_EQ(textOf(listCopy), "Image_00001.tif\nImage_00002.tif\nImage_00003.tif\n");
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(MultiPage, APdfBatchListsItsPathOncePerPage) {
    saveThree(formatMultiPagePdf);
    EXPECT_THAT(controller->imageFilePath, SizeIs(3));
    EXPECT_THAT(controller->imageFilePath, Each(inFolder("Image_00001.pdf")));
    EXPECT_FALSE(firstPageOfBatch);
    EXPECT_FALSE(fileExists(inFolder("Image_00001.pdf")));
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_EQ(textOf(inFolder("Image_00001.pdf")),
              "Image_00001.jpg\nImage_00002.jpg\nImage_00003.jpg\n");
    ASSERT_THAT(saved, SizeIs(1));
    EXPECT_EQ(saved[0].path, inFolder("Image_00001.pdf"));
    EXPECT_EQ(saved[0].pages, 3);
    EXPECT_EQ(saved[0].fileFormat, formatMultiPagePdf);
    EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), IsEmpty());
}

TEST_F(MultiPage, OnlyTheFirstPageOfABatchIsTestedForCollisions) {
    touch(inFolder("Image_00001.pdf"));
    saveThree(formatMultiPagePdf);
    EXPECT_EQ(multiPageTargetPath, inFolder("Image_00002.pdf"));
    EXPECT_EQ(controller->currentPage, 3U);
}

TEST_F(MultiPage, ANameTakenDuringTheBatchGivesTheNextNumber) {
    saveThree(formatMultiPagePdf);
    touch(inFolder("Image_00001.pdf"), "another program's");
    touch(inFolder("Image_00002.pdf"), "another program's");
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_EQ(textOf(inFolder("Image_00001.pdf")), "another program's");
    EXPECT_EQ(textOf(inFolder("Image_00003.pdf")),
              "Image_00001.jpg\nImage_00002.jpg\nImage_00003.jpg\n");
    EXPECT_THAT(controller->imageFilePath, Each(inFolder("Image_00003.pdf")));
    EXPECT_EQ(controller->currentPage, 4U);
    ASSERT_THAT(saved, SizeIs(1));
    EXPECT_EQ(saved[0].path, inFolder("Image_00003.pdf"));
}

// Nobody would find a file that is there; still nothing can be put in its place.
TEST_F(MultiPage, ALinkThatLeadsNowhereTakesItsName) {
    for (const char* name : {"Image_00001.pdf", "Image_00002.pdf"})
        ASSERT_EQ(symlink("nowhere", inFolder(name).c_str()), 0);
    saveThree(formatMultiPagePdf);
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_EQ(textOf(inFolder("Image_00003.pdf")),
              "Image_00001.jpg\nImage_00002.jpg\nImage_00003.jpg\n");
    EXPECT_THAT(controller->imageFilePath, Each(inFolder("Image_00003.pdf")));
    EXPECT_EQ(controller->currentPage, 4U);
}

TEST_F(MultiPage, AVanishedFolderKeepsTheStagedPages) {
    saveThree(formatMultiPagePdf);
    multiPageTargetPath = inFolder("gone/Image_00001.pdf");
    EXPECT_FALSE(controller->joinMultiPageFile());
    ASSERT_THAT(alerts, SizeIs(1));
    EXPECT_THAT(saved, IsEmpty());
    controller->imageFilePath = {inFolder("earlier.jpg"), multiPageTargetPath, multiPageTargetPath};
    controller->keepStagedPages();
    EXPECT_THAT(controller->imageFilePath, ElementsAre(inFolder("earlier.jpg")));
    controller->tellKeptPages();
    controller->tellKeptPages();
    ASSERT_THAT(alerts, SizeIs(2));
    const std::string kept = alerts[1].informativeText;
    EXPECT_TRUE(kept.starts_with(userDataFolder() + "/"));
    EXPECT_EQ(textOf(kept + "/Image_00003.jpg"), "page");
    EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), IsEmpty());
}

TEST_F(MultiPage, NothingStagedIsNothingToKeep) {
    saveThree(formatMultiPagePdf);
    EXPECT_TRUE(controller->joinMultiPageFile());
    controller->keepStagedPages();
    controller->tellKeptPages();
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_THAT(controller->imageFilePath, SizeIs(3));
}

TEST_F(MultiPage, ASinglePageFormatHasNothingToJoin) {
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_THAT(folderEntries(folder), ElementsAre("Image_00001.jpg"));
}

TEST_F(MultiPage, AStagedPageThatCannotBeWrittenIsNotSaved) {
    removePath(scratchPath(stagingFolderName));
    for (const int32_t format : {formatPdf, formatMultiPagePdf, formatMultiPageTiff}) {
        controller->profileFileformatSelect = format;
        EXPECT_EQ(saveGrey(), -1) << format;
    }
    EXPECT_EQ(controller->currentMultiPage, 1U);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
}

TEST_F(MultiPage, AStagedPageThatDoesNotFitIsTooLittleSpace) {
    for (const auto& [format, name] : {std::pair{formatMultiPagePdf, "Image_00001.jpg"},
                                       std::pair{formatMultiPageTiff, "Image_00001.tif"}}) {
        ASSERT_EQ(symlink("/dev/full", staged(name).c_str()), 0);
        controller->profileFileformatSelect = format;
        EXPECT_EQ(saveGrey(), -2) << format;
        EXPECT_FALSE(fileExists(staged(name))) << "nothing half written is joined";
    }
    EXPECT_EQ(controller->currentMultiPage, 1U);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
}

TEST_F(MultiPage, APdfPageGetsItsDocumentAtOnce) {
    controller->profileFileformatSelect = formatPdf;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), IsEmpty()); // nothing to be kept
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_EQ(textOf(inFolder("Image_00001.pdf")), "Image_00001.jpg\n");
    EXPECT_EQ(textOf(inFolder("Image_00002.pdf")), "Image_00001.jpg\n");
    EXPECT_EQ(controller->currentPage, 3U);
    EXPECT_THAT(saved, SizeIs(2));
    EXPECT_FALSE(fileExists(scratchPath(joinedPdfName)));
}

// Each is staged under the same name.
TEST_F(MultiPage, DocumentsThatCannotBeWrittenKeepEachTheirPage) {
    pageCodecs().pdf = [](const std::string&) { return std::make_unique<FullDiskJoiner>(); };
    controller->profileFileformatSelect = formatPdf;
    for (const char* page : {"first", "second"}) {
        pageCodecs().jpeg = [page](const BitmapImageRep&, Density) {
            return Bytes(page, page + std::string_view(page).size());
        };
        EXPECT_EQ(saveGrey(), -2);
    }
    ASSERT_THAT(controller->keptPagesFolders, SizeIs(2));
    EXPECT_EQ(textOf(controller->keptPagesFolders[0] + "/Image_00001.jpg"), "first");
    EXPECT_EQ(textOf(controller->keptPagesFolders[1] + "/Image_00001.jpg"), "second");
    EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), IsEmpty());
}

TEST_F(MultiPage, ADocumentIsNotStagedOverAPageThatCouldNotBeMoved) {
    touch(staged("Image_00001.jpg"), "earlier");
    controller->profileFileformatSelect = formatPdf;
    EXPECT_EQ(saveGrey(), -1);
    EXPECT_EQ(textOf(staged("Image_00001.jpg")), "earlier");
}

TEST_F(MultiPage, ADocumentIsNeverWrittenOverAnotherFile) {
    touch(inFolder("a.pdf"));
    touch(staged("Image_00001.jpg"));
    EXPECT_EQ(controller->CreatePDF(scratchPath(stagingFolderName), inFolder("a.pdf")), -2);
    EXPECT_EQ(textOf(inFolder("a.pdf")), "x");
}

TEST_F(MultiPage, StagedPagesComeInTheOrderOfTheirNumbers) {
    for (const char* name : {"Image_00002.jpg", "Image_00001.jpg", "Image_00010.jpg"})
        touch(staged(name));
    EXPECT_EQ(controller->CreateMPDF(scratchPath(stagingFolderName)), 1);
    EXPECT_EQ(textOf(scratchPath(joinedPdfName)),
              "Image_00001.jpg\nImage_00002.jpg\nImage_00010.jpg\n");
}

TEST_F(MultiPage, AnEmptyStagingFolder) {
    const std::string staging = scratchPath(stagingFolderName);
    EXPECT_EQ(controller->CreateMPDF(staging), 1);
    EXPECT_FALSE(fileExists(scratchPath(joinedPdfName)));
    EXPECT_EQ(controller->CreatePDF(staging, inFolder("empty.pdf")), 1);
    EXPECT_TRUE(fileExists(inFolder("empty.pdf")));
    EXPECT_EQ(controller->mergeTiffImage(staging), 1);
    EXPECT_FALSE(fileExists(scratchPath(joinedTiffName)));
    EXPECT_EQ(controller->mergeTiffImageEx(staging), -1);
    EXPECT_FALSE(fileExists(scratchPath(joinedTiffName)));
}

// Fails a thousand times at the second page, then succeeds.
class StubbornJoiner : public ListingJoiner {
public:
    StubbornJoiner(std::string path, int& attempts)
        : ListingJoiner(std::move(path)), attempts_(attempts) {}
    Added add(const std::string& pageFile) override {
        if (++attempts_ >= 2 && attempts_ <= 1001)
            return Added::unreadable;
        return ListingJoiner::add(pageFile);
    }

private:
    int& attempts_;
};

TEST_F(MultiPage, ALoaderThatFailsAThousandTimesLosesNoPage) {
    int attempts = 0;
    const auto stubborn = [&attempts](const std::string& path) {
        return std::make_unique<StubbornJoiner>(path, attempts);
    };
    pageCodecs().tiffDeclared300Dpi = stubborn;
    pageCodecs().pdf = stubborn;
    for (const char* name : {"1", "2", "3"})
        touch(staged(name));
    EXPECT_EQ(controller->mergeTiffImage(scratchPath(stagingFolderName)), 1);
    EXPECT_EQ(attempts, 1003);
    EXPECT_EQ(textOf(scratchPath(joinedTiffName)), "1\n2\n3\n");
    attempts = 0;
    EXPECT_EQ(controller->CreateMPDF(scratchPath(stagingFolderName)), 1);
    EXPECT_EQ(attempts, 1003);
    EXPECT_EQ(textOf(scratchPath(joinedPdfName)), "1\n2\n3\n");
}

TEST_F(MultiPage, AJoinOnAFullDisk) {
    const auto full = [](const std::string&) { return std::make_unique<FullDiskJoiner>(); };
    pageCodecs().tiffDeclared300Dpi = full;
    pageCodecs().tiffUnchanged = full;
    pageCodecs().pdf = full;
    touch(staged("1"));
    const std::string staging = scratchPath(stagingFolderName);
    EXPECT_EQ(controller->mergeTiffImage(staging), -2);
    EXPECT_EQ(controller->mergeTiffImageEx(staging), 1); // not examined: there is just no file
    EXPECT_EQ(controller->CreateMPDF(staging), -2);
    EXPECT_EQ(controller->CreatePDF(staging, inFolder("a.pdf")), -2);
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(MultiPage, AFullDiskAtTheJoinHasItsMessageAndKeepsThePages) {
    pageCodecs().pdf = [](const std::string&) { return std::make_unique<FullDiskJoiner>(); };
    saveThree(formatMultiPagePdf);
    EXPECT_FALSE(controller->joinMultiPageFile());
    EXPECT_THAT(alerts, SizeIs(1));
    EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), SizeIs(3));
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(MultiPage, AnOlderJoinedFileIsNeverTakenForTheNew) {
    touch(scratchPath(joinedTiffName), "old");
    touch(scratchPath(joinedPdfName), "old");
    touch(staged("1"));
    pageCodecs().tiffUnchanged = [](const std::string&) {
        return std::make_unique<FullDiskJoiner>();
    };
    EXPECT_EQ(controller->mergeTiffImageEx(scratchPath(stagingFolderName)), 1);
    EXPECT_FALSE(fileExists(scratchPath(joinedTiffName)));
}

TEST_F(MultiPage, BrandsThatPatchMetadataKeepTheirPagesUnchanged) {
    int unchanged = 0;
    pageCodecs().tiffUnchanged = [&unchanged](const std::string& path) {
        ++unchanged;
        return std::make_unique<ListingJoiner>(path);
    };
    saveThree(formatMultiPageTiff);
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_EQ(unchanged, 0);
    makeStagingFolders();
    gBrandNumber = 2;
    firstPageOfBatch = true;
    controller->currentMultiPage = 1;
    saveThree(formatMultiPageTiff);
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_EQ(unchanged, 1);
}

TEST_F(MultiPage, WithoutPagesOneJoinerEndsTheScanWithoutAWord) {
    controller->profileFileformatSelect = formatMultiPageTiff;
    multiPageTargetPath = inFolder("Image_00001.tif");
    EXPECT_TRUE(controller->joinMultiPageFile());
    for (const uint32_t brand : {2U, 3U}) {
        gBrandNumber = brand;
        EXPECT_FALSE(controller->joinMultiPageFile());
    }
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

// The user's file is there; only the list's copy is not.
TEST_F(MultiPage, ACopyForTheListThatCannotBeMadeHasTheMessageOfAFullDisk) {
    saveThree(formatMultiPageTiff);
    const std::string usual = multiTiffListPath;
    multiTiffListPath = scratchPath(scratchRootName) + "/gone/Image_00001.tif";
    EXPECT_FALSE(controller->joinMultiPageFile());
    EXPECT_THAT(alerts, SizeIs(1));
    EXPECT_THAT(folderEntries(folder), ElementsAre("Image_00001.tif"));
    EXPECT_THAT(saved, SizeIs(1));
    multiTiffListPath = usual;

    makeStagingFolders();
    firstPageOfBatch = true;
    controller->currentMultiPage = 1;
    saveThree(formatMultiPageTiff);
    int joins = 0;
    pageCodecs().tiffDeclared300Dpi =
        [&joins](const std::string& path) -> std::unique_ptr<PageJoiner> {
        if (++joins == 1)
            return std::make_unique<ListingJoiner>(path);
        return std::make_unique<FullDiskJoiner>();
    };
    EXPECT_FALSE(controller->joinMultiPageFile());
    EXPECT_THAT(alerts, SizeIs(2));
    EXPECT_THAT(saved, SizeIs(2));
    controller->keepStagedPages();
    EXPECT_THAT(controller->keptPagesFolders, IsEmpty()); // every page is in its file
}

} // namespace
} // namespace paperline
