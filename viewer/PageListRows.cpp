// Rows and selection of the page list and of the two tables of the source selection.
#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "viewer/CustomCell.h"
#include "viewer/ImageView.h"
#include "viewer/PageListModel.h"

#include <QItemSelectionModel>
#include <QTableView>

namespace paperline {

namespace {

bool isSourceTable(const AppDelegate& controller, const QObject* table) {
    return table != nullptr && table == controller._tableViewSelectSource;
}

bool isTwainTable(const AppDelegate& controller, const QObject* table) {
    return table != nullptr && table == controller._tableViewTWAIN;
}

bool isMainTable(const AppDelegate& controller, const QObject* table) {
    return table == controller._tableViewMain && !isSourceTable(controller, table) &&
           !isTwainTable(controller, table);
}

// Without the newest row while its page is only a temporary file.
uint32_t listedRows(const AppDelegate& controller) {
    const auto count = static_cast<uint32_t>(controller.cellInfos.size());
    const bool all = controller.mMenuFileSave == 1 && controller.nonFileSaveImageInTempFolder == 0;
    return all ? count : count - 1; // wraps when there is no row
}

const CellInfo* rowAt(const AppDelegate& controller, int row) {
    return row >= 0 && static_cast<size_t>(row) < controller.cellInfos.size()
               ? &controller.cellInfos[static_cast<size_t>(row)]
               : nullptr;
}

} // namespace

uint32_t AppDelegate::numberOfRowsInTableView(const QObject* tableView) const {
    TraceScope trace("numberOfRowsInTableView");
    if (isSourceTable(*this, tableView))
        return SelectSourceCount;
    if (isTwainTable(*this, tableView))
        return 1;
    return isMainTable(*this, tableView) ? listedRows(*this) : 0;
}

TableObjectValue AppDelegate::objectValueForTableColumn(const QObject* tableView, int row) const {
    TraceScope trace("objectValueForTableColumn");
    if (isTwainTable(*this, tableView))
        return std::string("TWAIN");
    if (isSourceTable(*this, tableView)) {
        if (row < 0 || static_cast<size_t>(row) >= dsArray.size())
            return std::monostate{};
        return dsArray[static_cast<size_t>(row)].productNameText();
    }
    const CellInfo* info = isMainTable(*this, tableView) ? rowAt(*this, row) : nullptr;
    return info != nullptr ? TableObjectValue(info) : TableObjectValue();
}

void AppDelegate::willDisplayCell(const QObject* tableView, CustomCell& cell, int row) const {
    TraceScope trace("willDisplayCell");
    const CellInfo* info = isMainTable(*this, tableView) ? rowAt(*this, row) : nullptr;
    if (info == nullptr)
        return;
    cell.setImage(info->image);
    cell.setTitle(info->title);
    cell.setSubtitle(info->subtitle);
    cell.setImagePath(info->imageFullPath);
    cell.setImageIndex(info->imageIndex);
}

void AppDelegate::tableViewSelectionDidChange(QObject* tableView, int row) {
    TraceScope trace("tableViewSelectionDidChange");
    if (row == -1 || isTwainTable(*this, tableView))
        return;
    if (isSourceTable(*this, tableView)) {
        mSourceDSSelect = static_cast<uint32_t>(row);
        return;
    }
    if (!isMainTable(*this, tableView) || rowAt(*this, row) == nullptr)
        return;
    mNeedSetImage = 1;
    if (mImageView != nullptr)
        mImageView->setRelaseCGImageRef(1);
    showRow(static_cast<uint32_t>(row));
    _selectedRaw = row;
    changeThumbnailSelect = 1;
}

void AppDelegate::reportRowSelection(QTableView* table) {
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this, table] {
        const QModelIndexList rows = table->selectionModel()->selectedRows();
        tableViewSelectionDidChange(table, rows.isEmpty() ? -1 : rows.constFirst().row());
    });
}

void AppDelegate::reloadMainTable() {
    if (_tableViewMain == nullptr)
        return;
    if (auto* model = qobject_cast<PageListModel*>(_tableViewMain->model()))
        model->reload();
    showPageCount(); // the empty page area hides even for an unlisted preview
}

void AppDelegate::dropNewestPath() {
    nonFileSaveImageInTempFolder = 0;
    if (imageFilePath.empty())
        return;
    const std::string path = imageFilePath.back();
    imageFilePath.pop_back();
    if (iNextImage <= static_cast<int32_t>(imageFilePath.size()))
        return; // not listed yet; rows of the same path are of earlier pages
    iNextImage = static_cast<int32_t>(imageFilePath.size());
    while (!cellInfos.empty() && cellInfos.back().imageFullPath == path)
        cellInfos.pop_back();
    reloadMainTable();
}

void AppDelegate::deselectRows() {
    if (_tableViewMain == nullptr || _tableViewMain->selectionModel() == nullptr)
        return;
    _tableViewMain->selectionModel()->clear();
}

void AppDelegate::selectLastRow() {
    const uint32_t rows = listedRows(*this);
    if (launchOptions().commandLine || rows == 0 || rows > cellInfos.size())
        return;
    const int last = static_cast<int>(rows - 1);
    if (_tableViewMain == nullptr || _tableViewMain->model() == nullptr) {
        tableViewSelectionDidChange(nullptr, last);
        return;
    }
    const QModelIndex index = _tableViewMain->model()->index(last, 0);
    // The same row may be another page now.
    if (_tableViewMain->selectionModel()->isSelected(index))
        tableViewSelectionDidChange(_tableViewMain, last);
    else
        _tableViewMain->setCurrentIndex(index); // selectRow() fails from right to left
    _tableViewMain->scrollTo(index);
}

} // namespace paperline
