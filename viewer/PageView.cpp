// Shows the selected page fitted or at actual size.
#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "platform/desktop/MainLoop.h"
#include "platform/process/SystemLog.h"
#include "viewer/ImageView.h"
#include "viewer/PageListRules.h"
#include "viewer/PixelConversion.h"

#include <QScrollArea>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

namespace paperline {

namespace {

// The window does not answer while pages are measured.
constexpr std::chrono::milliseconds measuringTime{50};

// Pages shown at actual size so far. Measuring for an earlier one stops.
uint32_t actualPagesShown = 0;

void traceRect(const std::string& name, const Rect& rect) {
    if (!isTracing())
        return;
    traceValue((name + ".x").c_str(), wholePoints(rect.x));
    traceValue((name + ".y").c_str(), wholePoints(rect.y));
    traceValue((name + ".height").c_str(), wholePoints(rect.height));
    traceValue((name + ".width").c_str(), wholePoints(rect.width));
}

void setScrollers(const AppDelegate& controller, bool vertical, bool horizontal) {
    QScrollArea* scroller = controller.showImageScrollView;
    if (scroller == nullptr)
        return;
    scroller->setVerticalScrollBarPolicy(vertical ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    scroller->setHorizontalScrollBarPolicy(horizontal ? Qt::ScrollBarAlwaysOn
                                                      : Qt::ScrollBarAlwaysOff);
}

// Size only: the scroll area has the view's position.
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

// None during a scan, which needs the memory and the processors.
std::vector<PagePlace> pagesBeside(const AppDelegate& controller, uint32_t row) {
    std::vector<PagePlace> pages;
    if (delayedMessagesAreHeld())
        return pages;
    for (const size_t next : nextRows(row, controller._selectedRaw, controller.cellInfos.size())) {
        const CellInfo& page = controller.cellInfos[next];
        pages.push_back({page.imageFullPath, page.imageIndex});
    }
    return pages;
}

void loadIntoView(const AppDelegate& controller, uint32_t row) {
    if (controller.mImageView == nullptr)
        return;
    const CellInfo& page = controller.cellInfos[row];
    const PageLoadError error =
        controller.mImageView->setImagePath(page.imageFullPath, page.imageIndex);
    if (error != PageLoadError::none)
        systemLog("Page not shown: " + page.imageFullPath + ": " + describe(error));
    controller.mImageView->expectPages({page.imageFullPath, page.imageIndex},
                                       pagesBeside(controller, row));
}

// Sets frame and scroll bars for the largest page of the file. False: not all are measured yet.
bool layOutActualPage(const AppDelegate& controller, const std::string& path) {
    const LargestPageSize largest = largestPagePixelSize(path, measuringTime);
    const ActualSizeFrame actual =
        actualSizeFrame(rectOf(controller.showImageScrollView->geometry()), largest.size);
    setScrollers(controller, actual.verticalScroller, actual.horizontalScroller);
    setViewFrame(controller, actual.frame);
    return largest.complete;
}

// Measures a file of thousands of pages between events; the frame grows with what is found.
void measureOn(AppDelegate& controller, const std::string& path, uint32_t shown) {
    QTimer::singleShot(0, &controller, [&controller, path, shown] {
        const bool stillShown =
            shown == actualPagesShown && controller._fitOrAcutalImage == actualSizeMode;
        if (stillShown && !layOutActualPage(controller, path))
            measureOn(controller, path, shown);
    });
}

// For both commands. False: there is nothing to show yet.
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
    traceRect("FitlSizeImage", orgRect);
    if (row >= cellInfos.size())
        return;
    if (mNeedSetImage != 0 || mMenuFileSave == 0)
        loadIntoView(*this, row);
    firstFitImage = 1;
    mNeedSetImage = 0;
    scrollToTopLeft(*this);
}

void AppDelegate::showActualSizeImage(uint32_t row) {
    TraceScope trace("showActualSizeImage");
    setScrollers(*this, false, false);
    traceRect("ActualSizeImage", orgRect);
    if (row >= cellInfos.size())
        return;
    if (mNeedSetImage != 0)
        loadIntoView(*this, row);
    if (showImageScrollView != nullptr) {
        const std::string& path = cellInfos[row].imageFullPath;
        ++actualPagesShown;
        if (!layOutActualPage(*this, path))
            measureOn(*this, path, actualPagesShown);
        scrollToTopLeft(*this);
    }
    mNeedSetImage = 0;
}

void AppDelegate::showRow(uint32_t row) {
    if (_fitOrAcutalImage == fitMode)
        showFitlSizeImage(row);
    else
        showActualSizeImage(row);
}

void AppDelegate::toolBarItemFitPage(QObject*) {
    TraceScope trace("toolBarItemFitPage");
    if (_fitOrAcutalImage == fitMode || !prepareModeChange(*this))
        return;
    setViewFrame(*this, orgRect);
    changeMode(*this, fitMode);
    mNeedSetImage = 0; // on purpose before showing: loads the preview only
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
