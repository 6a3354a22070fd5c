#include "PageWindow.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QScrollBar>

#include <filesystem>
#include <functional>

namespace paperline {
namespace {

class PageView : public PageWindow {
protected:
    PageView() {
        addPicture("small.bmp", quarters(200, 300));
        addPicture("tall.bmp", quarters(300, 1000));
        addPicture("large.bmp", quarters(1500, 2000));
        controller_.GetImageFromImageFolder();
        controller_.reloadMainTable();
    }
    void select(int row) { controller_._tableViewMain->selectRow(row); }
    QScrollArea& pane() { return *controller_.showImageScrollView; }
    ImageView& view() { return *controller_.mImageView; }
    bool verticalScroller() { return pane().verticalScrollBarPolicy() == Qt::ScrollBarAlwaysOn; }
    bool horizontalScroller() {
        return pane().horizontalScrollBarPolicy() == Qt::ScrollBarAlwaysOn;
    }
};

TEST_F(PageView, TheFittedViewFillsThePane) {
    EXPECT_EQ(controller_.orgRect, (Rect{0, 0, 600, 600}));
    select(2);
    EXPECT_EQ(view().size(), QSize(600, 600));
    EXPECT_FALSE(verticalScroller());
    EXPECT_FALSE(horizontalScroller());
    const QImage image = grabView();
    EXPECT_EQ(image.pixelColor(5, 5), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(5 + 434, 5 + 579), QColor(Qt::yellow)); // 580 high, 435 wide
    EXPECT_EQ(image.pixelColor(450, 300), QColor(191, 191, 191));
}

TEST_F(PageView, ThePaneMayChangeItsSizeWhilePagesAreFitted) {
    select(2);
    window_.resize(1016, 400);
    window_.setSizes({215, 800});
    EXPECT_EQ(controller_.orgRect, (Rect{0, 0, 800, 400}));
    EXPECT_EQ(view().size(), QSize(800, 400));
    EXPECT_EQ(grabView().pixelColor(5 + 284, 5 + 379), QColor(Qt::yellow));
}

TEST_F(PageView, WhereTheViewDoesNotReachThePaneHasItsColour) {
    view().resize(50, 50);
    EXPECT_EQ(pane().grab().toImage().pixelColor(300, 300), QColor(191, 191, 191));
}

TEST_F(PageView, ASmallPageKeepsThePanesSizeAtActualSize) {
    select(0);
    controller_.toolBarItemActualPage(nullptr);
    EXPECT_EQ(view().size(), QSize(600, 600));
    EXPECT_FALSE(verticalScroller());
    EXPECT_FALSE(horizontalScroller());
    const QImage image = grabView();
    EXPECT_EQ(image.pixelColor(5, 5), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(204, 304), QColor(Qt::yellow));
    EXPECT_EQ(image.pixelColor(207, 100), QColor(191, 191, 191));
}

TEST_F(PageView, ATallPageGetsTheVerticalScrollerOnly) {
    select(1);
    controller_.toolBarItemActualPage(nullptr);
    EXPECT_EQ(view().size(), QSize(600, 1010));
    EXPECT_TRUE(verticalScroller());
    EXPECT_FALSE(horizontalScroller());
}

TEST_F(PageView, ALargePageGetsBothScrollersAndShowsItsTopLeftCorner) {
    select(2);
    controller_.toolBarItemActualPage(nullptr);
    EXPECT_EQ(view().size(), QSize(1515, 2010));
    EXPECT_TRUE(verticalScroller());
    EXPECT_TRUE(horizontalScroller());
    pane().verticalScrollBar()->setValue(300);
    pane().horizontalScrollBar()->setValue(200);
    controller_.showActualSizeImage(2);
    EXPECT_EQ(pane().verticalScrollBar()->value(), 0);
    EXPECT_EQ(pane().horizontalScrollBar()->value(), 0);
}

TEST_F(PageView, TheLargestOfAllPagesDecidesTheFrame) {
    writeTiff(addPath(folder_.file("mixed.tif")),
              {{quarters(100, 100)}, {quarters(900, 50)}, {quarters(50, 800)}});
    controller_.GetImageFromImageFolder();
    controller_.reloadMainTable();
    controller_.toolBarItemActualPage(nullptr);
    select(0);
    controller_.toolBarItemActualPage(nullptr);
    select(3);
    EXPECT_EQ(view().size(), QSize(915, 810));
    EXPECT_EQ(view().pagePixels(), (PixelSize{100, 100}));
}

TEST_F(PageView, FitTurnsTheScrollersOffAgain) {
    select(2);
    controller_.toolBarItemActualPage(nullptr);
    controller_.toolBarItemFitPage(nullptr);
    EXPECT_FALSE(verticalScroller());
    EXPECT_FALSE(horizontalScroller());
    EXPECT_EQ(view().size(), QSize(600, 600));
    EXPECT_EQ(view().mFitorActualImage, 1);
    EXPECT_EQ(controller_._fitOrAcutalImage, 1);
}

TEST_F(PageView, TheRequestedModeAgainDoesNothing) {
    select(0);
    controller_._selectedRaw = 2; // another row meanwhile
    controller_.mNeedSetImage = 1;
    controller_.toolBarItemFitPage(nullptr);
    EXPECT_EQ(controller_.mNeedSetImage, 1);
    EXPECT_EQ(view().pagePixels(), (PixelSize{200, 300}));
}

TEST_F(PageView, NothingHappensBeforeARowIsSelected) {
    controller_.toolBarItemActualPage(nullptr);
    EXPECT_EQ(controller_._fitOrAcutalImage, 1);
    EXPECT_EQ(view().mFitorActualImage, 1);
}

TEST_F(PageView, FitForgetsAPendingReloadAndActualSizeCarriesItOut) {
    select(0);
    controller_._selectedRaw = 1;
    controller_.mNeedSetImage = 1;
    controller_.toolBarItemActualPage(nullptr);
    EXPECT_EQ(view().pagePixels(), (PixelSize{300, 1000}));
    EXPECT_EQ(controller_.mNeedSetImage, 0);
    controller_._selectedRaw = 2;
    controller_.mNeedSetImage = 1;
    controller_.toolBarItemFitPage(nullptr);
    EXPECT_EQ(view().pagePixels(), (PixelSize{300, 1000}));
    EXPECT_EQ(controller_.mNeedSetImage, 0);
}

TEST_F(PageView, WithoutSavingTheLastRowIsShownAndFitLoadsItAnew) {
    select(0);
    controller_.mMenuFileSave = 0;
    controller_._selectedRaw = -1;
    controller_.toolBarItemActualPage(nullptr);
    EXPECT_EQ(view().pagePixels(), (PixelSize{200, 300})); // nothing is pending
    controller_.toolBarItemFitPage(nullptr);
    EXPECT_EQ(view().pagePixels(), (PixelSize{1500, 2000}));
}

TEST_F(PageView, ACommandAfterASelectionDropsTheTemporaryPage) {
    select(0);
    addPicture("preview.bmp", quarters(50, 50));
    controller_.GetImageFromImageFolder();
    controller_.nonFileSaveImageInTempFolder = 1;
    controller_.reloadMainTable();
    controller_.changeThumbnailSelect = 1;
    controller_.toolBarItemActualPage(nullptr);
    EXPECT_EQ(controller_.nonFileSaveImageInTempFolder, 0);
    EXPECT_EQ(controller_.imageFilePath.size(), 3U);
    EXPECT_EQ(captions(), (std::vector<std::string>{"small", "tall", "large"}));
    EXPECT_EQ(iNextImage, 3);
    EXPECT_EQ(controller_._tableViewMain->model()->rowCount(), 3);
    EXPECT_EQ(controller_._fitOrAcutalImage, 2);
}

TEST_F(PageView, ATemporaryPageStaysUntilARowWasSelected) {
    addPicture("preview.bmp", quarters(50, 50));
    controller_.GetImageFromImageFolder();
    controller_.nonFileSaveImageInTempFolder = 1;
    controller_._selectedRaw = -1;
    controller_.changeThumbnailSelect = 0;
    controller_.mNeedSetImage = 1;
    controller_.toolBarItemActualPage(nullptr);
    EXPECT_EQ(controller_.nonFileSaveImageInTempFolder, 1);
    EXPECT_EQ(view().pagePixels(), (PixelSize{50, 50}));
}

TEST_F(PageView, ShownRowsLoadOnlyWhenAskedOrWhenPagesAreNotSaved) {
    select(0);
    controller_.showFitlSizeImage(1);
    EXPECT_EQ(view().pagePixels(), (PixelSize{200, 300}));
    controller_.mMenuFileSave = 0;
    controller_.showFitlSizeImage(1);
    EXPECT_EQ(view().pagePixels(), (PixelSize{300, 1000}));
    controller_.showActualSizeImage(2);
    EXPECT_EQ(view().pagePixels(), (PixelSize{300, 1000}));
    EXPECT_EQ(controller_.firstFitImage, 1);
}

TEST_F(PageView, RowsThatAreNotThereChangeNothing) {
    select(0);
    for (const uint32_t row : {3U, UINT32_MAX}) {
        controller_.mNeedSetImage = 1;
        controller_.showFitlSizeImage(row);
        controller_.showActualSizeImage(row);
        EXPECT_EQ(controller_.mNeedSetImage, 1);
    }
    EXPECT_EQ(view().pagePixels(), (PixelSize{200, 300}));
}

TEST_F(PageView, TheDividerIsHiddenUnlessPagesAreSaved) {
    EXPECT_FALSE(controller_.shouldHideDividerAtIndex(0));
    startTrace();
    for (const int32_t value : {0, 2}) {
        controller_.mMenuFileSave = value;
        EXPECT_TRUE(controller_.shouldHideDividerAtIndex(0));
    }
    EXPECT_EQ(traced()[1], "    1: dividerIndex : 0");
}

TEST_F(PageView, AResizedSplitViewShowsTheActualPageAgain) {
    select(2);
    controller_.toolBarItemActualPage(nullptr);
    window_.resize(1916, 2300);
    window_.setSizes({215, 1700});
    EXPECT_EQ(view().size(), QSize(1700, 2300));
    EXPECT_FALSE(verticalScroller());
    window_.setSizes({915, 1000});
    EXPECT_EQ(view().width(), 1515);
    EXPECT_TRUE(horizontalScroller());
}

TEST_F(PageView, LiveResizingEndsWhenThePaneIsQuiet) {
    select(2);
    grabView();
    window_.resize(900, 500);
    EXPECT_TRUE(view().mLiveResizing);
    QElapsedTimer patience;
    patience.start();
    while (view().mLiveResizing && patience.elapsed() < 60'000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    EXPECT_FALSE(view().mLiveResizing);
}

TEST_F(PageView, TracesFramesAndRows) {
    select(0);
    startTrace();
    controller_.toolBarItemActualPage(nullptr);
    const std::vector<std::string> lines = traced();
    const std::vector<std::string> wanted{"In  1: toolBarItemActualPage",
                                          "    0: _selectedRaw",
                                          "In  1: showActualSizeImage",
                                          "    0: ActualSizeImage.x",
                                          "    0: ActualSizeImage.y",
                                          "    600: ActualSizeImage.height",
                                          "    600: ActualSizeImage.width",
                                          "Out 1: showActualSizeImage",
                                          "Out 1: toolBarItemActualPage"};
    EXPECT_EQ(lines, wanted);
    controller_.mMenuFileSave = 0;
    controller_.toolBarItemFitPage(nullptr);
    EXPECT_EQ(traced()[wanted.size() + 1], "    2: [cellInfos count]-1");
    EXPECT_EQ(traced()[wanted.size() + 3], "    0: FitlSizeImage.x");
}

// --- files that change while they are listed, selected and drawn ---

class ChangedPage : public PageView, public ::testing::WithParamInterface<int> {
protected:
    void change(const std::string& path) {
        switch (GetParam()) {
        case 0:
            std::filesystem::remove(path);
            break;
        case 1:
            cutTo(path, 60);
            break;
        case 2:
            writeText(path, "This was a page once.");
            break;
        case 3: {
            Bytes bytes = readBytes(path);
            for (const size_t at : {size_t{18}, size_t{22}}) { // 100,000 x 100,000
                bytes[at] = 0xA0;
                bytes[at + 1] = 0x86;
                bytes[at + 2] = 0x01;
            }
            writeBytes(path, bytes);
            break;
        }
        case 4:
            writePdf(path, std::vector<PdfPage>(10'000, PdfPage{30, 20, "1 0 0"}));
            break;
        default:
            std::filesystem::remove(path);
            std::filesystem::create_directory(path);
            break;
        }
    }
};

TEST_P(ChangedPage, NeverHurtsListSelectionOrDrawing) {
    select(0);
    const QImage first = grabView();
    for (const char* name : {"small.bmp", "tall.bmp", "large.bmp"})
        change(folder_.file(name));
    window_.grab();
    select(1);
    window_.grab();
    controller_.toolBarItemActualPage(nullptr);
    window_.grab();
    select(2);
    window_.grab();
    controller_.splitViewDidResizeSubviews();
    controller_.toolBarItemFitPage(nullptr);
    window_.grab();
    if (GetParam() != 1) { // a cut picture may show what is left of it
        EXPECT_EQ(view().pagePixels(), (PixelSize{200, 300}));
    }
    EXPECT_EQ(controller_.cellInfos.size(), 3U);
}

TEST_P(ChangedPage, NeverHurtsANewListing) {
    addPicture("new.bmp");
    change(folder_.file("new.bmp"));
    controller_.GetImageFromImageFolder();
    controller_.reloadMainTable();
    window_.grab();
    EXPECT_LE(controller_.cellInfos.size(), 4U);
}

INSTANTIATE_TEST_SUITE_P(Pages, ChangedPage, ::testing::Range(0, 6));

TEST_F(PageView, APdfFileOfTenThousandPagesReplacesAListedOne) {
    const std::string path = addPath(folder_.file("Scan.pdf"));
    writePdf(path, {{120, 80, "1 0 0"}, {120, 80, "0 1 0"}});
    controller_.GetImageFromImageFolder();
    controller_.reloadMainTable();
    select(4);
    controller_.toolBarItemActualPage(nullptr);
    writePdf(path, std::vector<PdfPage>(10'000, PdfPage{900, 20, "0 0 1"}));
    window_.grab();
    select(3);
    EXPECT_EQ(view().pagePixels(), (PixelSize{900, 20}));
    EXPECT_EQ(view().width(), 915);
    writeText(path, "no document");
    select(4);
    window_.grab();
    EXPECT_EQ(view().pagePixels(), PixelSize{});
}

class LongFile : public PageView {
protected:
    // At actual size, its last page by far the largest.
    void showLongFile() {
        std::vector<PdfPage> pages(10'000, PdfPage{300, 200, "1 0 0"});
        pages.back() = {1200, 900, "1 0 0"};
        const std::string path = addPath(folder_.file("Scan.pdf"));
        writePdf(path, {{120, 80, "1 0 0"}, {120, 80, "0 1 0"}});
        controller_.GetImageFromImageFolder();
        controller_.reloadMainTable();
        writePdf(path, pages);
        select(0);
        controller_.toolBarItemActualPage(nullptr);
        select(3);
    }
    void turnLoopUntil(const std::function<bool()>& done) {
        QElapsedTimer patience;
        patience.start();
        while (!done() && patience.elapsed() < 60'000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    }
};

TEST_F(LongFile, ItsFrameGrowsUntilAllPagesAreMeasured) {
    showLongFile();
    turnLoopUntil([this] { return view().width() == 1215; });
    EXPECT_EQ(view().size(), QSize(1215, 910));
    EXPECT_TRUE(verticalScroller());
    EXPECT_TRUE(horizontalScroller());
    EXPECT_EQ(view().pagePixels(), (PixelSize{300, 200}));
}

TEST_F(LongFile, AnotherPageShownMeanwhileKeepsItsOwnFrame) {
    showLongFile();
    select(1); // 300 x 1000
    for (int turn = 0; turn < 50; ++turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_EQ(view().size(), QSize(600, 1010));
    EXPECT_FALSE(horizontalScroller());
}

TEST_F(LongFile, FittingItMeanwhileKeepsThePanesFrame) {
    showLongFile();
    controller_.toolBarItemFitPage(nullptr);
    for (int turn = 0; turn < 50; ++turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_EQ(view().size(), QSize(600, 600));
    EXPECT_FALSE(verticalScroller());
}

} // namespace
} // namespace paperline
