// What becomes of staged pages when their file is there: of those in it, and of those left out.
#include "MultiPageFixture.h"

#include "output/ScratchNames.h"
#include "platform/files/Files.h"

#include <gmock/gmock.h>

namespace paperline {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using JoinedPages = MultiPage;

// When the file is told, none of its pages is staged any more: a process that ends then leaves
// nothing to be kept. Removing them comes afterwards.
TEST_F(JoinedPages, AreSetAsideInOneStep) {
    for (const int32_t format : {formatMultiPagePdf, formatMultiPageTiff}) {
        makeStagingFolders();
        firstPageOfBatch = true;
        controller->currentMultiPage = 1;
        saveThree(format);
        const std::string aside = scratchPath(scratchRootName) + "/JoinedPages";
        ASSERT_TRUE(createFolder(aside)); // what such a process left
        bool wasTold = false;
        controller->savedFileObserver = [&](const SavedFile&) {
            wasTold = true;
            EXPECT_THAT(folderEntries(aside), SizeIs(3));
            EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), IsEmpty());
            controller->keepPagesOfEarlierRuns();
        };
        EXPECT_TRUE(controller->joinMultiPageFile());
        EXPECT_TRUE(wasTold);
        EXPECT_THAT(controller->keptPagesFolders, IsEmpty());
        EXPECT_FALSE(fileExists(aside));
        EXPECT_TRUE(folderExists(scratchPath(stagingFolderName)));
    }
}

// Cannot read pages whose name holds the text.
class PickyJoiner : public ListingJoiner {
public:
    PickyJoiner(std::string path, std::string refused)
        : ListingJoiner(std::move(path)), refused_(std::move(refused)) {}
    Added add(const std::string& pageFile) override {
        return pageFile.ends_with(refused_) ? Added::unreadable : ListingJoiner::add(pageFile);
    }

private:
    std::string refused_;
};

PageCodecs::JoinerFactory joinerThatRefuses(const std::string& name) {
    return [name](const std::string& path) { return std::make_unique<PickyJoiner>(path, name); };
}

TEST_F(JoinedPages, ThatAJoinLeavesOutAreKept) {
    gBrandNumber = 3;
    pageCodecs().tiffUnchanged = joinerThatRefuses("2.tif");
    saveThree(formatMultiPageTiff);
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_EQ(textOf(inFolder("Image_00001.tif")), "Image_00001.tif\nImage_00003.tif\n");
    ASSERT_THAT(saved, SizeIs(1));
    EXPECT_EQ(saved[0].pages, 2);
    controller->keepStagedPages();
    ASSERT_THAT(controller->keptPagesFolders, SizeIs(1));
    const std::string kept = controller->keptPagesFolders[0];
    EXPECT_THAT(folderEntries(kept), ElementsAre("Image_00002.tif"));
    EXPECT_EQ(textOf(kept + "/Image_00002.tif"), "page");
    EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), IsEmpty());

    // The next batch, of another format, has nothing to do with it.
    makeStagingFolders();
    firstPageOfBatch = true;
    controller->currentMultiPage = 1;
    saveThree(formatMultiPagePdf);
    EXPECT_TRUE(controller->joinMultiPageFile());
    ASSERT_THAT(saved, SizeIs(2));
    EXPECT_EQ(saved[1].pages, 3);
    EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), IsEmpty());
}

TEST_F(JoinedPages, ThatADocumentIsWrittenWithoutAreKept) {
    pageCodecs().pdf = joinerThatRefuses(".jpg");
    controller->profileFileformatSelect = formatPdf;
    EXPECT_EQ(saveGrey(), 0); // the document is empty, and whole
    EXPECT_EQ(textOf(inFolder("Image_00001.pdf")), "");
    EXPECT_THAT(controller->imageFilePath, ElementsAre(inFolder("Image_00001.pdf")));
    EXPECT_THAT(saved, IsEmpty());
    ASSERT_THAT(controller->keptPagesFolders, SizeIs(1));
    EXPECT_EQ(textOf(controller->keptPagesFolders[0] + "/Image_00001.jpg"), "page");
    EXPECT_THAT(folderEntries(scratchPath(stagingFolderName)), IsEmpty());
}

} // namespace
} // namespace paperline
