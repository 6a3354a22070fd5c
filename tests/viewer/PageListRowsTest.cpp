#include "PageWindow.h"
#include "viewer/CustomCell.h"
#include "viewer/PageListModel.h"

#include <QCoreApplication>
#include <QItemSelectionModel>
#include <QScrollBar>

#include <cstring>
#include <filesystem>

namespace paperline {
namespace {

class PageListRows : public PageWindow {
protected:
    void listThree() {
        for (const char* name : {"a.bmp", "b.bmp", "c.bmp"})
            addPicture(name);
        controller_.GetImageFromImageFolder();
        controller_.reloadMainTable();
    }
    // More rows than the list has room for.
    void listMany() {
        for (int page = 0; page < 8; ++page)
            addPicture("page" + std::to_string(page) + ".bmp");
        controller_.GetImageFromImageFolder();
        controller_.reloadMainTable();
        QCoreApplication::processEvents();
    }
    int modelRows() const { return controller_._tableViewMain->model()->rowCount(); }
    uint32_t answeredRows() const {
        return controller_.numberOfRowsInTableView(controller_._tableViewMain);
    }
};

TEST_F(PageListRows, AllRowsAreListedWhilePagesAreSaved) {
    listThree();
    EXPECT_EQ(answeredRows(), 3U);
    EXPECT_EQ(modelRows(), 3);
}

TEST_F(PageListRows, TheNewestIsLeftOutWhilePagesAreOnlyShown) {
    listThree();
    controller_.mMenuFileSave = 0;
    controller_.reloadMainTable();
    EXPECT_EQ(answeredRows(), 2U);
    EXPECT_EQ(modelRows(), 2);
}

TEST_F(PageListRows, TheNewestIsLeftOutWhileItIsATemporaryFile) {
    listThree();
    controller_.nonFileSaveImageInTempFolder = 1;
    controller_.reloadMainTable();
    EXPECT_EQ(answeredRows(), 2U);
    EXPECT_EQ(modelRows(), 2);
}

TEST_F(PageListRows, AnEmptyListLessOneIsAnsweredButNeverShown) {
    controller_.mMenuFileSave = 0;
    controller_.reloadMainTable();
    EXPECT_EQ(answeredRows(), 4294967295U);
    EXPECT_EQ(modelRows(), 0);
}

TEST_F(PageListRows, TheDialogsTablesAreAnsweredToo) {
    QTableView sources, twain;
    controller_._tableViewSelectSource = &sources;
    controller_._tableViewTWAIN = &twain;
    controller_.SelectSourceCount = 4;
    EXPECT_EQ(controller_.numberOfRowsInTableView(&sources), 4U);
    EXPECT_EQ(controller_.numberOfRowsInTableView(&twain), 1U);
    TWAIN_INFO source;
    std::strcpy(source.productName.data(), "Scanner One");
    controller_.dsArray.push_back(source);
    EXPECT_EQ(std::get<std::string>(controller_.objectValueForTableColumn(&twain, 0)), "TWAIN");
    EXPECT_EQ(std::get<std::string>(controller_.objectValueForTableColumn(&sources, 0)),
              "Scanner One");
    EXPECT_TRUE(
        std::holds_alternative<std::monostate>(controller_.objectValueForTableColumn(&sources, 1)));
    controller_.tableViewSelectionDidChange(&sources, 2);
    EXPECT_EQ(controller_.mSourceDSSelect, 2U);
    controller_.tableViewSelectionDidChange(&sources, -1);
    EXPECT_EQ(controller_.mSourceDSSelect, 2U);
    controller_.tableViewSelectionDidChange(&twain, 0);
    EXPECT_EQ(controller_._selectedRaw, -1);
    EXPECT_EQ(controller_.changeThumbnailSelect, 0);
}

TEST_F(PageListRows, TheMainTableIsAnsweredWithItsRecords) {
    listThree();
    const QObject* table = controller_._tableViewMain;
    EXPECT_EQ(std::get<const CellInfo*>(controller_.objectValueForTableColumn(table, 1)),
              &controller_.cellInfos[1]);
    EXPECT_TRUE(
        std::holds_alternative<std::monostate>(controller_.objectValueForTableColumn(table, 3)));
    EXPECT_TRUE(
        std::holds_alternative<std::monostate>(controller_.objectValueForTableColumn(table, -1)));
}

TEST_F(PageListRows, ACellTakesItsRecordBeforeItIsDrawn) {
    listThree();
    controller_.cellInfos[1].imageIndex = 5;
    CustomCell cell;
    controller_.willDisplayCell(controller_._tableViewMain, cell, 1);
    EXPECT_EQ(cell.subtitle(), "b");
    EXPECT_EQ(cell.title(), "");
    EXPECT_EQ(cell.imagePath(), folder_.file("b.bmp"));
    EXPECT_EQ(cell.imageIndex(), 5);
    EXPECT_EQ(cell.image(), controller_.cellInfos[1].image);
    QTableView other;
    controller_.willDisplayCell(&other, cell, 0);
    EXPECT_EQ(cell.subtitle(), "b");
}

TEST_F(PageListRows, SelectingARowShowsItsPage) {
    listThree();
    controller_._tableViewMain->selectRow(1);
    EXPECT_EQ(controller_._selectedRaw, 1);
    EXPECT_EQ(controller_.changeThumbnailSelect, 1);
    EXPECT_EQ(controller_.mNeedSetImage, 0);
    EXPECT_EQ(controller_.mImageView->pagePixels(), (PixelSize{60, 90}));
    EXPECT_EQ(controller_.mImageView->mRelaseCGImageRef, 1);
    grabView();
    EXPECT_EQ(controller_.mImageView->mRelaseCGImageRef, 0);
}

TEST_F(PageListRows, DeselectionChangesNothing) {
    listThree();
    controller_._tableViewMain->selectRow(1);
    const QImage before = grabView();
    controller_._tableViewMain->clearSelection();
    EXPECT_EQ(controller_._selectedRaw, 1);
    EXPECT_EQ(grabView(), before);
}

TEST_F(PageListRows, ARowThatIsNotThereChangesNothing) {
    listThree();
    controller_.tableViewSelectionDidChange(controller_._tableViewMain, 3);
    EXPECT_EQ(controller_._selectedRaw, -1);
}

TEST_F(PageListRows, SelectionSurvivesAReload) {
    listThree();
    controller_._tableViewMain->selectRow(1);
    addPicture("d.bmp");
    controller_.GetImageFromImageFolder();
    controller_.reloadMainTable();
    EXPECT_EQ(modelRows(), 4);
    EXPECT_TRUE(controller_._tableViewMain->selectionModel()->isRowSelected(1));
}

TEST_F(PageListRows, ARowThatWasDeselectedCanBeChosenAgain) {
    listThree();
    controller_._tableViewMain->selectRow(1);
    controller_.deselectRows();
    controller_._selectedRaw = -1;
    EXPECT_FALSE(controller_._tableViewMain->selectionModel()->hasSelection());
    EXPECT_FALSE(controller_._tableViewMain->currentIndex().isValid());
    controller_._tableViewMain->selectRow(1);
    EXPECT_EQ(controller_._selectedRaw, 1);
}

TEST_F(PageListRows, TheNewestPageIsSelected) {
    listThree();
    controller_.selectLastRow();
    EXPECT_EQ(controller_._selectedRaw, 2);
    EXPECT_TRUE(controller_._tableViewMain->selectionModel()->isRowSelected(2));
}

TEST_F(PageListRows, TheNewestPageIsShownAgainWhenItsRowIsSelectedAlready) {
    listThree();
    controller_.selectLastRow();
    ASSERT_TRUE(quarters(30, 30).save(QString::fromStdString(folder_.file("c.bmp"))));
    controller_.selectLastRow();
    EXPECT_EQ(controller_.mImageView->pagePixels(), (PixelSize{30, 30}));
}

TEST_F(PageListRows, TheNewestPageComesIntoViewThoughItsRowIsSelectedAlready) {
    listMany();
    QTableView& table = *controller_._tableViewMain;
    controller_.selectLastRow();
    table.scrollToTop();
    controller_.selectLastRow();
    const QModelIndex last = table.model()->index(modelRows() - 1, 0);
    EXPECT_TRUE(table.viewport()->rect().contains(table.visualRect(last).center()));
}

TEST_F(PageListRows, AHighlightEndsBeforeTheScroller) {
    listMany();
    QTableView& table = *controller_._tableViewMain;
    table.selectRow(0);
    const QImage picture = table.viewport()->grab().toImage();
    const int middle = table.rowHeight(0) / 2, width = table.viewport()->width();
    ASSERT_LT(width, table.width());
    const QRgb paper = table.palette().color(QPalette::Base).rgb();
    EXPECT_NE(picture.pixel(width - 8, middle), paper);
    EXPECT_EQ(picture.pixel(width - 2, middle), paper);
}

TEST_F(PageListRows, TheListNeverScrollsSideways) {
    listMany(); // the scroller lies over the column's end
    EXPECT_GT(controller_._tableViewMain->columnWidth(0),
              controller_._tableViewMain->viewport()->width());
    EXPECT_EQ(controller_._tableViewMain->horizontalScrollBar()->maximum(), 0);
}

TEST_F(PageListRows, RowsFollowTheFont) {
    listThree();
    QTableView& table = *controller_._tableViewMain;
    QFont large = table.font();
    large.setPointSizeF(3 * large.pointSizeF());
    ASSERT_GT(CustomCell::rowHeight(large), CustomCell::rowHeight(table.font()));
    table.setFont(large);
    EXPECT_EQ(table.rowHeight(0), CustomCell::rowHeight(large));
}

TEST_F(PageListRows, ARowSaysItsCaptionAndWhereItsFileIs) {
    listThree();
    const QModelIndex row = controller_._tableViewMain->model()->index(1, 0);
    EXPECT_EQ(row.data(Qt::AccessibleTextRole).toString(), "b");
    EXPECT_EQ(row.data(Qt::ToolTipRole).toString().toStdString(), folder_.file("b.bmp"));
}

TEST_F(PageListRows, AReloadAsksForTheRowsThatStayAgain) {
    listThree();
    int first = -1, last = -1;
    QObject::connect(controller_._tableViewMain->model(),
                     &QAbstractItemModel::dataChanged,
                     [&](const QModelIndex& from, const QModelIndex& to) {
                         first = from.row();
                         last = to.row();
                     });
    addPicture("d.bmp");
    controller_.GetImageFromImageFolder();
    controller_.reloadMainTable();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, 2);
}

TEST_F(PageListRows, SelectingTheLastOfNoRowsDoesNothing) {
    controller_.selectLastRow();
    controller_.mMenuFileSave = 0;
    controller_.selectLastRow();
    EXPECT_EQ(controller_._selectedRaw, -1);
}

TEST_F(PageListRows, TheModelSurvivesRowsThatGoBeforeAReload) {
    listThree();
    controller_.cellInfos.clear();
    EXPECT_EQ(modelRows(), 3);
    const QModelIndex index = controller_._tableViewMain->model()->index(2, 0);
    EXPECT_FALSE(index.data().isValid());
    EXPECT_FALSE(index.data(PageListModel::CellInfoRole).isValid());
    window_.grab();
    controller_.reloadMainTable();
    EXPECT_EQ(modelRows(), 0);
}

TEST_F(PageListRows, RowsAreTallEnoughForThumbnailAndCaption) {
    listThree();
    const QTableView& table = *controller_._tableViewMain;
    EXPECT_EQ(table.rowHeight(0), CustomCell::rowHeight(table.font()));
    EXPECT_GE(table.rowHeight(0), 25 + 123 + 5 + table.fontMetrics().height());
    EXPECT_EQ(table.columnWidth(0), table.width());
}

} // namespace
} // namespace paperline
