#include "PageWindow.h"

#include "platform/desktop/Alert.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"

#include <algorithm>
#include <cstdlib>

namespace paperline {

PageWindow::PageWindow() {
    setenv("PAPERLINE_SCRATCH", scratch_.path().c_str(), 1);
    setenv("PAPERLINE_ROOT", scratch_.path().c_str(), 1);
    setenv("HOME", scratch_.path().c_str(), 1);
    setenv("XDG_DATA_HOME", scratch_.path().c_str(), 1);
    std::string error;
    EXPECT_TRUE(chooseScratchRoot(ScratchKind::sharedTmp, error)) << error;
    setAlertPresenter([this](const Alert& alert) {
        alerts_.push_back(alert.message);
        return alertDefaultReturn;
    });
    host() = realHost();
    iNextImage = 0;
    gHighResolutionPageCount = 0;
    gNoDisplayImageShown = 0;
    gHighResolutionScan = false;

    controller_.mMenuFileSave = 1;
    controller_._fitOrAcutalImage = 1;
    controller_._selectedRaw = -1;
    controller_.mNeedSetImage = 1;
    controller_._tableViewMain = new QTableView;
    controller_.mImageView = new ImageView;
    controller_.showImageScrollView = new QScrollArea;
    controller_.showImageScrollView->setFrameShape(QFrame::NoFrame);
    controller_.showImageScrollView->setWidget(controller_.mImageView);
    controller_._tableViewMain->setSelectionBehavior(QAbstractItemView::SelectRows);
    controller_._tableViewMain->setSelectionMode(QAbstractItemView::SingleSelection);
    window_.addWidget(controller_._tableViewMain);
    window_.addWidget(controller_.showImageScrollView);
    window_.setHandleWidth(1);
    controller_.connectPageViews();
    window_.resize(816, 600);
    window_.setSizes({215, 600});
    window_.show();
}

PageWindow::~PageWindow() {
    setAlertPresenter({});
    host() = realHost();
}

std::string PageWindow::addPath(const std::string& path) {
    controller_.imageFilePath.push_back(path);
    return path;
}

std::string PageWindow::addPicture(const std::string& name, const QImage& picture) {
    const std::string path = folder_.file(name);
    EXPECT_TRUE(picture.save(QString::fromStdString(path)));
    return addPath(path);
}

std::vector<std::string> PageWindow::captions() const {
    std::vector<std::string> result;
    for (const CellInfo& info : controller_.cellInfos)
        result.push_back(info.subtitle);
    return result;
}

QImage PageWindow::grabView() {
    return controller_.mImageView->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

void PageWindow::startTrace() {
    trace_.emplace();
}

std::vector<std::string> PageWindow::traced() const {
    return trace_->entries();
}

std::vector<std::string> PageWindow::tracedTexts(const std::string& operation) const {
    const std::string front = "    1: " + operation + " : ";
    std::vector<std::string> texts;
    for (const std::string& line : traced())
        if (line.starts_with(front))
            texts.push_back(line.substr(front.size()));
    return texts;
}

} // namespace paperline
