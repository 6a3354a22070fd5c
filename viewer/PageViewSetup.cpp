// Connects the window's page list and page view to the controller.
#include "controller/AppDelegate.h"
#include "viewer/CustomCell.h"
#include "viewer/ImageView.h"
#include "viewer/PageListModel.h"

#include <QEvent>
#include <QHeaderView>
#include <QScrollArea>
#include <QTableView>
#include <QTimer>

#include <functional>
#include <utility>

namespace paperline {

namespace {

// Runs the action at every event of one type that the widget gets.
class EventWatcher : public QObject {
public:
    EventWatcher(QWidget* widget, QEvent::Type type, std::function<void()> action)
        : QObject(widget), type_(type), action_(std::move(action)) {
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == type_)
            action_();
        return false;
    }

private:
    QEvent::Type type_;
    std::function<void()> action_;
};

void fitRows(QTableView* table) {
    table->verticalHeader()->setMinimumSectionSize(0);
    table->verticalHeader()->setDefaultSectionSize(CustomCell::rowHeight(table->font()));
}

// The column stays as wide as the table, scroll bar included: thumbnails and captions would move by
// different amounts.
void keepColumnWidth(QTableView* table) {
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Fixed);
    const auto widen = [table] { table->horizontalHeader()->resizeSection(0, table->width()); };
    widen();
    new EventWatcher(table, QEvent::Resize, widen);
}

void setUpTable(AppDelegate& controller) {
    QTableView* table = controller._tableViewMain;
    auto* model = new PageListModel(
        &controller.cellInfos,
        [&controller] { return controller.numberOfRowsInTableView(controller._tableViewMain); },
        table);
    auto* cell = new CustomCell(table);
    cell->setWillDisplayCell([&controller, cell](int row) {
        controller.willDisplayCell(controller._tableViewMain, *cell, row);
    });
    table->setModel(model);
    table->setItemDelegateForColumn(0, cell);
    keepColumnWidth(table);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    fitRows(table);
    new EventWatcher(table, QEvent::FontChange, [table] { fitRows(table); });
    controller.reportRowSelection(table);
}

void setUpPane(AppDelegate& controller) {
    QScrollArea* pane = controller.showImageScrollView;
    // The pane around the view has the view's colour.
    QPalette palette = pane->viewport()->palette();
    palette.setColor(QPalette::Window, ImageView::surroundings());
    pane->viewport()->setPalette(palette);
    pane->viewport()->setAutoFillBackground(true);

    constexpr int quietMilliseconds = 120; // ends live resizing
    auto* resizeEnd = new QTimer(pane);
    resizeEnd->setSingleShot(true);
    resizeEnd->setInterval(quietMilliseconds);
    QObject::connect(resizeEnd, &QTimer::timeout, &controller, [&controller] {
        controller.mImageView->viewDidEndLiveResize();
    });
    new EventWatcher(pane, QEvent::Resize, [&controller, pane, resizeEnd] {
        if (pane->isVisible() && controller.mImageView->pagePixels() != PixelSize{}) {
            controller.mImageView->viewWillStartLiveResize();
            resizeEnd->start();
        }
        controller.pagePaneDidResize();
    });
}

} // namespace

void AppDelegate::connectPageViews() {
    if (_tableViewMain != nullptr)
        setUpTable(*this);
    if (showImageScrollView == nullptr || mImageView == nullptr)
        return;
    setUpPane(*this);
    pagePaneDidResize();
}

// A fitted view fills the pane.
void AppDelegate::pagePaneDidResize() {
    if (showImageScrollView == nullptr || mImageView == nullptr)
        return;
    const QSize pane = showImageScrollView->maximumViewportSize();
    orgRect = {0, 0, static_cast<double>(pane.width()), static_cast<double>(pane.height())};
    if (_fitOrAcutalImage != actualSizeMode)
        mImageView->resize(pane);
    splitViewDidResizeSubviews();
}

} // namespace paperline
