// Shows the selected page fitted or at actual size.
#include "app/AppDelegate.h"
#include "app/CvOutputLog.h"
#include "platform/SystemLog.h"
#include "viewer/ImageView.h"
#include "viewer/PageLoader.h"

#include <QScrollArea>

#include <algorithm>
#include <cmath>

namespace paperline {

namespace {

constexpr int fitMode = 1;
constexpr int actualSizeMode = 2;

const CellInfo* pageAt(const AppDelegate& controller, uint32_t row) {
    return row < controller.cellInfos.size() ? &controller.cellInfos[row] : nullptr;
}

int32_t wholePoints(double value) {
    return std::abs(value) < 2e9 ? static_cast<int32_t>(value) : 0;
}

void setScrollers(const AppDelegate& controller, bool vertical, bool horizontal) {
    QScrollArea* scroller = controller.showImageScrollView;
    if (scroller == nullptr)
        return;
    scroller->setVerticalScrollBarPolicy(vertical ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    scroller->setHorizontalScrollBarPolicy(horizontal ? Qt::ScrollBarAlwaysOn
                                                      : Qt::ScrollBarAlwaysOff);
}

// The scroll area keeps the view's place; the frame's size is what counts.
void setViewFrame(const AppDelegate& controller, const Rect& frame) {
    const auto side = [](double points) {
        return static_cast<int>(std::clamp(points, 0.0, static_cast<double>(QWIDGETSIZE_MAX)));
    };
    if (controller.mImageView != nullptr)
        controller.mImageView->resize(side(frame.width), side(frame.height));
}

void scrollToTopLeft(const AppDelegate& controller) {
    if (controller.showImageScrollView != nullptr)
        controller.showImageScrollView->ensureVisible(0, 0, 0, 0);
}

Rect frameOf(const QWidget* widget) {
    const QRect geometry = widget->geometry();
    return {static_cast<double>(geometry.x()),
            static_cast<double>(geometry.y()),
            static_cast<double>(geometry.width()),
            static_cast<double>(geometry.height())};
}

void loadIntoView(const AppDelegate& controller, const CellInfo& page) {
    if (controller.mImageView == nullptr)
        return;
    const PageLoadError error =
        controller.mImageView->setImagePath(page.imageFullPath, page.imageIndex);
    if (error != PageLoadError::none)
        systemLog("Page not shown: " + page.imageFullPath + ": " + describe(error));
}

// What both commands do before the mode changes. False: there is nothing to show yet.
bool prepareModeChange(AppDelegate& controller) {
    if (controller.mMenuFileSave != 1)
        return true;
    if (controller._selectedRaw < 0 && controller.nonFileSaveImageInTempFolder == 0)
        return false;
    if (controller.changeThumbnailSelect == 1 && controller.nonFileSaveImageInTempFolder == 1) {
        controller.dropNewestPath();
        controller.GetImageFromImageFolder();
        controller.reloadMainTable();
    }
    return true;
}

uint32_t rowToShow(const AppDelegate& controller) {
    if (controller.mMenuFileSave == 1 && controller.nonFileSaveImageInTempFolder == 0) {
        traceValue("_selectedRaw", controller._selectedRaw);
        return static_cast<uint32_t>(controller._selectedRaw);
    }
    const auto last = static_cast<int32_t>(controller.cellInfos.size()) - 1;
    traceValue("[cellInfos count]-1", last);
    return static_cast<uint32_t>(last);
}

void changeMode(AppDelegate& controller, int mode) {
    if (controller.mImageView != nullptr)
        controller.mImageView->setFitorAcutalImage(mode);
    controller._fitOrAcutalImage = mode;
}

} // namespace

void AppDelegate::showFitlSizeImage(uint32_t row) {
    TraceScope trace("showFitlSizeImage");
    setScrollers(*this, false, false);
    setViewFrame(*this, orgRect);
    traceValue("FitlSizeImage.x", wholePoints(orgRect.x));
    traceValue("FitlSizeImage.y", wholePoints(orgRect.y));
    traceValue("FitlSizeImage.height", wholePoints(orgRect.height));
    traceValue("FitlSizeImage.width", wholePoints(orgRect.width));
    const CellInfo* page = pageAt(*this, row);
    if (page == nullptr)
        return;
    if (mNeedSetImage != 0 || mMenuFileSave == 0)
        loadIntoView(*this, *page);
    firstFitImage = 1;
    mNeedSetImage = 0;
    scrollToTopLeft(*this);
}

void AppDelegate::showActualSizeImage(uint32_t row) {
    TraceScope trace("showActualSizeImage");
    setScrollers(*this, false, false);
    traceValue("ActualSizeImage.x", wholePoints(orgRect.x));
    traceValue("ActualSizeImage.y", wholePoints(orgRect.y));
    traceValue("ActualSizeImage.height", wholePoints(orgRect.height));
    traceValue("ActualSizeImage.width", wholePoints(orgRect.width));
    const CellInfo* page = pageAt(*this, row);
    if (page == nullptr)
        return;
    if (mNeedSetImage != 0)
        loadIntoView(*this, *page);
    if (showImageScrollView != nullptr) {
        const ActualSizeFrame actual = actualSizeFrame(frameOf(showImageScrollView),
                                                       largestPagePixelSize(page->imageFullPath));
        setScrollers(*this, actual.verticalScroller, actual.horizontalScroller);
        setViewFrame(*this, actual.frame);
        scrollToTopLeft(*this);
    }
    mNeedSetImage = 0;
}

void AppDelegate::toolBarItemFitPage(QObject*) {
    TraceScope trace("toolBarItemFitPage");
    if (_fitOrAcutalImage == fitMode || !prepareModeChange(*this))
        return;
    setViewFrame(*this, orgRect);
    changeMode(*this, fitMode);
    mNeedSetImage = 0; // before showing: only the preview is loaded anew
    showFitlSizeImage(rowToShow(*this));
}

void AppDelegate::toolBarItemActualPage(QObject*) {
    TraceScope trace("toolBarItemActualPage");
    if (_fitOrAcutalImage == actualSizeMode || !prepareModeChange(*this))
        return;
    changeMode(*this, actualSizeMode);
    showActualSizeImage(rowToShow(*this));
    mNeedSetImage = 0;
}

bool AppDelegate::shouldHideDividerAtIndex(int dividerIndex) const {
    TraceScope trace("shouldHideDividerAtIndex");
    if (mMenuFileSave == 1)
        return false;
    traceNumber("dividerIndex", "   ", dividerIndex);
    return true;
}

void AppDelegate::splitViewDidResizeSubviews() {
    TraceScope trace("splitViewDidResizeSubviews");
    if (_fitOrAcutalImage == actualSizeMode)
        showActualSizeImage(static_cast<uint32_t>(_selectedRaw));
}

} // namespace paperline
