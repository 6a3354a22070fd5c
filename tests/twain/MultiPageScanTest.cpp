// Batches of the multi-page formats from the first strip to the joined file, with a joiner that
// lists what it was given.
#include "SessionFixture.h"

#include "base/FileFormats.h"
#include "output/PageCodecs.h"
#include "platform/desktop/Alert.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"

#include <gmock/gmock.h>

#include <memory>

namespace paperline::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

using Bytes = std::vector<uint8_t>;

class NameListJoiner : public PageJoiner {
public:
    NameListJoiner(std::string path, const bool& finishes)
        : path_(std::move(path)), finishes_(finishes) {}
    Added add(const std::string& pageFile) override {
        names_ += lastPathComponent(pageFile) + " ";
        return Added::yes;
    }
    bool finish() override {
        return finishes_ && writeFile(path_, Bytes(names_.begin(), names_.end()));
    }

private:
    std::string path_;
    std::string names_;
    const bool& finishes_;
};

class MultiPageScanTest : public SessionFixture {
protected:
    MultiPageScanTest() {
        PageCodecs& codecs = pageCodecs();
        codecs.jpeg = codecs.tiff = [](const BitmapImageRep&, Density) {
            return Bytes{'p', 'a', 'g', 'e'};
        };
        codecs.pdf = codecs.tiffDeclared300Dpi =
            codecs.tiffUnchanged = [this](const std::string& path) {
                return std::make_unique<NameListJoiner>(path, joinerFinishes);
            };
        controller->savedFileObserver = [this](const SavedFile& file) { saved.push_back(file); };
        controller->profileFileformatSelect = formatMultiPagePdf;
        setAlertPresenter([this](const Alert& alert) {
            alerts.push_back(alert.message);
            if (alert.message == "PagesKept")
                told.push_back(alert.informativeText);
            return alertDefaultReturn;
        });
    }
    ~MultiPageScanTest() override {
        pageCodecs() = platformCodecs();
        removePath(keptFolder());
    }

    void connectWithPages(size_t pages) {
        ScriptedSource& source = addSource();
        for (size_t page = 0; page < pages; ++page)
            source.pages.push_back(goodPage(info));
        connect();
    }
    void scanAndTellToEndAfterAPage() {
        dsm.intercept = [](const Triplet& triplet, TW_MEMREF) -> std::optional<uint16_t> {
            if (triplet == endXfer)
                requestTermination();
            return std::nullopt;
        };
        scanAtOnce();
        resetTerminationRequest();
    }
    std::string textOf(const std::string& path) const {
        const Bytes bytes = readFile(path).value_or(Bytes{});
        return {bytes.begin(), bytes.end()};
    }
    std::string keptFolder() const { return userDataFolder() + "/Kept Pages"; }
    // Pages in the folders of the user's that keep what got into no file; the folders go.
    std::vector<std::string> takeKeptPages() const {
        std::vector<std::string> pages;
        for (const std::string& batch : folderEntries(keptFolder())) {
            for (const std::string& page : folderEntries(keptFolder() + "/" + batch))
                pages.push_back(page);
        }
        removePath(keptFolder());
        std::sort(pages.begin(), pages.end());
        return pages;
    }

    bool joinerFinishes = true;
    std::vector<std::string> told; // folders named in messages about kept pages
    std::vector<SavedFile> saved;
    const TW_IMAGEINFO info = pageInfo(10, 6, 8, 300);
};

TEST_F(MultiPageScanTest, JoinsABatchIntoOnePdf) {
    connectWithPages(3);
    scanAtOnce();
    EXPECT_EQ(textOf(savedPath(1, "pdf")), "Image_00001.jpg Image_00002.jpg Image_00003.jpg ");
    EXPECT_EQ(controller->currentPage, 2U);
    EXPECT_EQ(controller->currentMultiPage, 1U);
    ASSERT_THAT(saved, SizeIs(1));
    EXPECT_EQ(saved[0].pages, 3);
    EXPECT_THAT(alerts, Each("NoDisplayImage")) << "the joiner's text is no document";
    EXPECT_THAT(takeKeptPages(), IsEmpty());
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(MultiPageScanTest, GivesEveryBatchANumberOfItsOwn) {
    connectWithPages(2);
    for (int batch = 1; batch <= 3; ++batch) {
        scanAtOnce();
        EXPECT_EQ(textOf(savedPath(batch, "pdf")), "Image_00001.jpg Image_00002.jpg ") << batch;
    }
    EXPECT_EQ(controller->currentPage, 4U);
}

TEST_F(MultiPageScanTest, JoinsATiffForTheFolderAndOneForTheList) {
    controller->profileFileformatSelect = formatMultiPageTiff;
    controller->currentPage = 7;
    connectWithPages(3);
    scanAtOnce();
    const std::string names = "Image_00001.tif Image_00002.tif Image_00003.tif ";
    EXPECT_EQ(textOf(savedPath(7, "tif")), names);
    EXPECT_EQ(textOf(scratchFolder() + "/Image_00007.tif"), names);
    EXPECT_EQ(controller->currentPage, 8U);
}

TEST_F(MultiPageScanTest, DisablesTheSourceBeforeItJoins) {
    connectWithPages(1);
    bool openAtJoin = true;
    pageCodecs().pdf = [&](const std::string& path) {
        openAtJoin = dsm.isSourceOpen();
        return std::make_unique<NameListJoiner>(path, joinerFinishes);
    };
    scanAtOnce();
    EXPECT_FALSE(openAtJoin);
}

TEST_F(MultiPageScanTest, KeepsStagedPagesWhenALaterPageFails) {
    connectWithPages(3);
    dsm.sources[0].pages[2].infoCode = twain::TWRC_FAILURE;
    scanAtOnce();
    EXPECT_FALSE(fileExists(savedPath(1, "pdf")));
    EXPECT_EQ(controller->currentPage, 2U) << "the number is used up";
    ASSERT_THAT(alerts, SizeIs(2));
    EXPECT_EQ(alerts[0], "ShowNoMem");
    EXPECT_THAT(takeKeptPages(), ElementsAre("Image_00001.jpg", "Image_00002.jpg"));
    EXPECT_THAT(saved, IsEmpty());
    EXPECT_EQ(controller->mScanSetup, 0);
    EXPECT_EQ(scansEnded, 1);
}

// A full disk loses the page that did not fit, and no other.
TEST_F(MultiPageScanTest, JoinsTheOtherPagesWhenOneHasNoSpace) {
    for (const int32_t format : {formatMultiPagePdf, formatMultiPageTiff}) {
        for (const int fullAt : {1, 2, 3}) {
            startOver();
            saved.clear();
            controller->savedFileObserver = [this](const SavedFile& file) {
                saved.push_back(file);
            };
            controller->profileFileformatSelect = format;
            connectWithPages(3);
            int asked = 0;
            host().freeSpaceBytes = [&](const std::string&) {
                return std::optional<int64_t>(++asked == fullAt ? 0 : int64_t{1} << 40);
            };
            const uint32_t number = controller->currentPage;
            scanAtOnce();
            const bool isPdf = format == formatMultiPagePdf;
            EXPECT_EQ(asked, 3);
            EXPECT_EQ(textOf(savedPath(static_cast<int>(number), isPdf ? "pdf" : "tif")),
                      isPdf ? "Image_00001.jpg Image_00002.jpg "
                            : "Image_00001.tif Image_00002.tif ")
                << "page " << fullAt;
            ASSERT_THAT(saved, SizeIs(1));
            EXPECT_EQ(saved[0].pages, 2);
            EXPECT_THAT(alerts, Contains("NoEnoughDiskSpace").Times(1));
            EXPECT_THAT(takeKeptPages(), IsEmpty());
            EXPECT_EQ(controller->currentPage, number + 1);
        }
    }
}

TEST_F(MultiPageScanTest, KeepsStagedPagesWhenTheJoinFails) {
    for (int32_t format : {formatMultiPagePdf, formatMultiPageTiff}) {
        startOver();
        controller->profileFileformatSelect = format;
        joinerFinishes = false;
        connectWithPages(2);
        scanAtOnce();
        ASSERT_THAT(alerts, SizeIs(2)) << format;
        EXPECT_EQ(alerts[0], "NoEnoughDiskSpace");
        EXPECT_THAT(takeKeptPages(), SizeIs(2)) << format;
        EXPECT_THAT(folderEntries(folder), IsEmpty());
        EXPECT_EQ(controller->mScanSetup, 0);
        EXPECT_EQ(scansEnded, 1);
    }
}

TEST_F(MultiPageScanTest, KeepsStagedPagesWhenTheMoveFails) {
    connectWithPages(2);
    controller->createFolerprofileFolderName = folder + "/nowhere";
    scanAtOnce();
    ASSERT_THAT(alerts, SizeIs(2));
    EXPECT_EQ(alerts[0], "NoEnoughDiskSpace");
    EXPECT_THAT(takeKeptPages(), SizeIs(2));
}

TEST_F(MultiPageScanTest, KeepsWhatAnEarlierProcessLeftBehind) {
    connectWithPages(1);
    writeTextFile(scratchFolder() + "/MultiImage/Image_00009.jpg", "page");
    scanAtOnce();
    EXPECT_THAT(takeKeptPages(), ElementsAre("Image_00009.jpg"));
    EXPECT_EQ(textOf(savedPath(1, "pdf")), "Image_00001.jpg ");
}

TEST_F(MultiPageScanTest, KeepsPagesAsideThatTheKeptFolderDoesNotTake) {
    writeTextFile(keptFolder(), "a file in the folder's place");
    joinerFinishes = false;
    connectWithPages(2);
    for (int batch = 1; batch <= 2; ++batch) {
        scanAtOnce();
        ASSERT_THAT(told, SizeIs(batch)) << "what was told before is not told again";
        EXPECT_THAT(told.back(), StartsWith(scratchFolder() + "/MultiImage "));
        EXPECT_THAT(folderEntries(told.back()),
                    UnorderedElementsAre("Image_00001.jpg", "Image_00002.jpg"));
    }
    EXPECT_NE(told[0], told[1]);

    removePath(keptFolder());
    controller->keepPagesOfEarlierRuns();
    controller->tellKeptPages();
    EXPECT_THAT(takeKeptPages(), SizeIs(4));
    ASSERT_THAT(told, SizeIs(3));
    EXPECT_THAT(told.back(), StartsWith(keptFolder() + "/"));
    joinerFinishes = true;
    scanAtOnce();
    EXPECT_EQ(textOf(savedPath(3, "pdf")), "Image_00001.jpg Image_00002.jpg ");
}

// A folder in which nothing can be renamed cannot be made for root, so a page stands in the way
// that the test puts back.
TEST_F(MultiPageScanTest, StagesNothingOverPagesThatStay) {
    writeTextFile(keptFolder(), "a file in the folder's place");
    writeTextFile(scratchFolder() + "/MultiImage/Image_00001.jpg", "of an earlier batch");
    connectWithPages(2);
    const std::string staged = scratchFolder() + "/MultiImage/Image_00001.jpg";
    setAlertPresenter([&](const Alert& alert) {
        alerts.push_back(alert.message);
        if (!fileExists(staged)) // between the keeping and the making of the folders
            writeTextFile(staged, "of an earlier batch");
        return alertDefaultReturn;
    });
    for (const int32_t format : {formatPdf, formatMultiPagePdf, formatMultiPageTiff}) {
        controller->profileFileformatSelect = format;
        alerts.clear();
        dsm.forgetCalls();
        scanAtOnce();
        EXPECT_THAT(alerts, ElementsAre("PagesKept", "NoSaveImage", "PagesKept")) << format;
        EXPECT_EQ(dsm.count(imageMemXfer), 0U);
        EXPECT_FALSE(dsm.isSourceOpen());
    }
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
    alerts.clear();
    controller->profileFileformatSelect = formatBmp;
    pageCodecs() = platformCodecs();
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("PagesKept", "PagesKept")) << "a page on its own is not staged";
    EXPECT_TRUE(fileExists(savedPath(1)) || fileExists(savedPath(3)));
}

TEST_F(MultiPageScanTest, KeepsStagedPagesWhenToldToEnd) {
    connectWithPages(3);
    scanAndTellToEndAfterAPage();
    EXPECT_THAT(takeKeptPages(), ElementsAre("Image_00001.jpg"));
    EXPECT_FALSE(fileExists(savedPath(1, "pdf")));
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    EXPECT_FALSE(dsm.isSourceOpen());
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
    EXPECT_EQ(scansEnded, 1);
}

TEST_F(MultiPageScanTest, JoinsAWholeBatchThoughToldToEnd) {
    connectWithPages(1);
    scanAndTellToEndAfterAPage();
    EXPECT_EQ(textOf(savedPath(1, "pdf")), "Image_00001.jpg ");
}

TEST_F(MultiPageScanTest, JoinsNothingWhenEveryPageIsCancelled) {
    connectWithPages(2);
    dsm.fail(imageMemXfer, twain::TWRC_CANCEL);
    scanAtOnce();
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_EQ(controller->currentPage, 2U);
    EXPECT_EQ(scansEnded, 1);
}

TEST_F(MultiPageScanTest, SkipsTheJoinWithTheSaveSwitchOff) {
    controller->mMenuFileSave = 0;
    connectWithPages(2);
    scanAtOnce();
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    EXPECT_EQ(controller->currentPage, 1U);
    EXPECT_THAT(saved, IsEmpty());
}

TEST_F(MultiPageScanTest, BuildsRowsOnceAfterTheBatch) {
    connectWithPages(3);
    std::vector<int32_t> listedAtPage;
    dsm.intercept = [&](const Triplet& triplet, TW_MEMREF) -> std::optional<uint16_t> {
        if (triplet == endXfer)
            listedAtPage.push_back(iNextImage);
        return std::nullopt;
    };
    scanAtOnce();
    EXPECT_THAT(listedAtPage, Each(0));
    listedAtPage.clear();
    iNextImage = 0;
    controller->imageFilePath.clear();
    controller->profileFileformatSelect = formatBmp; // listed page by page
    pageCodecs() = platformCodecs();                 // thumbnails need a real one
    scanAtOnce();
    EXPECT_THAT(listedAtPage, ElementsAre(1, 2, 3));
}

} // namespace
} // namespace paperline::test
