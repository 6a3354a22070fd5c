#include "viewer/ImageView.h"

#include "base/CvOutputLog.h"
#include "controller/ViewerState.h"
#include "viewer/PageListRules.h"

#include <QPainter>
#include <QTransform>

#include <cmath>
#include <utility>

namespace paperline {

namespace {

const QColor pageEdge(0, 0, 0, 70);
// The corner that placePage() gives, without its rounding errors.
constexpr double pageLeft = 5;
constexpr double pageTop = 5;
// QPainter cannot draw larger pictures.
constexpr double largestDrawnSide = 2'000'000;

// The transform for Qt: picture and view have their y axes growing downward.
QTransform deviceTransform(const AffineTransform& t, PixelSize page, double viewHeight) {
    const double pageHeight = page.height;
    return {t.a, -t.b, -t.c, t.d, t.c * pageHeight + t.tx, viewHeight - (t.d * pageHeight + t.ty)};
}

bool swapsSides(int orientation) {
    return orientation >= 5;
}

// The picture turned and mirrored as its orientation says.
QImage upright(const QImage& stored, int orientation) {
    const bool mirrorsAcross = orientation == 2 || orientation == 3 || orientation >= 7;
    const bool mirrorsDown =
        orientation == 3 || orientation == 4 || orientation == 5 || orientation == 8;
    QImage image =
        mirrorsAcross || mirrorsDown ? stored.mirrored(mirrorsAcross, mirrorsDown) : stored;
    return swapsSides(orientation) ? image.transformed(QTransform().rotate(90)) : image;
}

} // namespace

ImageView::ImageView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::NoFocus); // the scroll area takes the keys
}

QColor ImageView::surroundings() {
    return QColor::fromRgbF(0.75F, 0.75F, 0.75F);
}

PageLoadError ImageView::setImagePath(const std::string& path, int imageIndex) {
    const TraceScope trace("setImagePath");
    const LoadedPage page = pagesAhead_.load({path, imageIndex});
    const bool isPdf = pageFileKind(path) == PageFileKind::pdf;
    if (page.error == PageLoadError::none || (isPdf && page.error != PageLoadError::cannotOpen))
        setImage(page.raster, page.properties);
    return page.error;
}

void ImageView::setImage(std::shared_ptr<const PageRaster> image,
                         const PageProperties& withMetadata) {
    const TraceScope trace("setImage");
    mImage = std::move(image);
    shown_ = mImage;
    reduced_ = {};
    mMeta = withMetadata;
    update();
}

float ImageView::dpiWidth() const {
    return resolutionOrDefault(mMeta.dpiWidth);
}

float ImageView::dpiHeight() const {
    return resolutionOrDefault(mMeta.dpiHeight);
}

int ImageView::orientation() const {
    return orientationOrDefault(mMeta.orientation);
}

PixelSize ImageView::pagePixels() const {
    return shown_ ? shown_->pixels : PixelSize{};
}

AffineTransform ImageView::imageTransform() const {
    return orientationTransform(orientation(), dpiWidth(), dpiHeight(), pagePixels());
}

AffineTransform ImageView::imageTransformToFitView() const {
    return fitTransform(imageTransform(),
                        pagePixels(),
                        {static_cast<double>(width()), static_cast<double>(height())},
                        mFitorActualImage == fitMode);
}

void ImageView::setFitorAcutalImage(int mode) {
    mFitorActualImage = static_cast<uint8_t>(mode);
    update();
}

void ImageView::setRelaseCGImageRef(int value) {
    mRelaseCGImageRef = static_cast<uint8_t>(value);
}

void ImageView::viewWillStartLiveResize() {
    mLiveResizing = true;
}

void ImageView::viewDidEndLiveResize() {
    const TraceScope trace("viewDidEndLiveResize");
    mLiveResizing = false;
    repaint();
}

void ImageView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    drawRect(painter);
}

void ImageView::drawRect(QPainter& painter) {
    const TraceScope trace("drawRect");
    painter.fillRect(rect(), surroundings());
    if (!shown_)
        return;
    const Rect bounds{0, 0, static_cast<double>(width()), static_cast<double>(height())};
    const PagePlacement placement = placePage(imageTransformToFitView(), pagePixels(), bounds);
    tracePlacement(placement);
    const Size drawn = placement.drawnSize;
    const bool drawable = drawn.width > 0 && drawn.height > 0 && drawn.width < largestDrawnSide &&
                          drawn.height < largestDrawnSide;
    if (drawable) {
        painter.save();
        drawPage(painter, placement);
        painter.restore();
        drawEdge(painter, placement);
    }
    if (mLiveResizing || mRelaseCGImageRef == 0)
        return;
    mImage.reset();
    mRelaseCGImageRef = 0;
}

void ImageView::tracePlacement(const PagePlacement& placement) const {
    traceValue("viewBounds.origin.x", 0);
    traceValue(mFitorActualImage == fitMode ? "FIT_IAMGE tx" : "ACTUAL_IMAGE tx",
               wholePoints(placement.transform.tx));
}

// QPainter shrinks and turns a picture coarsely. A page drawn smaller than it is gets a smooth copy
// of the drawn size, which is kept.
bool ImageView::drawsReduced(const PagePlacement& placement) const {
    const QSize raster = shown_->image.size();
    const bool swapped = swapsSides(orientation());
    const double ratio = devicePixelRatioF();
    const double across = (swapped ? raster.height() : raster.width());
    const double down = (swapped ? raster.width() : raster.height());
    return placement.drawnSize.width * ratio < across + 0.5 &&
           placement.drawnSize.height * ratio < down + 0.5;
}

const QImage& ImageView::reducedPage(const PagePlacement& placement) {
    const double ratio = devicePixelRatioF();
    const auto side = [ratio](double points) {
        return std::max(1, static_cast<int>(std::lround(points * ratio)));
    };
    const QSize wanted(side(placement.drawnSize.width), side(placement.drawnSize.height));
    if (reduced_.size() == wanted)
        return reduced_;
    const bool swapped = swapsSides(orientation());
    const QImage scaled = shown_->image.scaled(
        swapped ? wanted.transposed() : wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    reduced_ = upright(scaled, orientation());
    reduced_.setDevicePixelRatio(ratio);
    return reduced_;
}

void ImageView::drawPage(QPainter& painter, const PagePlacement& placement) {
    if (!mLiveResizing && drawsReduced(placement)) {
        painter.drawImage(QPointF(pageLeft, pageTop), reducedPage(placement));
        return;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform, !mLiveResizing);
    painter.setTransform(deviceTransform(placement.transform, pagePixels(), height()), true);
    painter.drawImage(QRectF(0, 0, pagePixels().width, pagePixels().height), shown_->image);
}

void ImageView::drawEdge(QPainter& painter, const PagePlacement& placement) const {
    const double line = 1 / devicePixelRatioF();
    const QRectF page(pageLeft, pageTop, placement.drawnSize.width, placement.drawnSize.height);
    painter.setPen(QPen(pageEdge, line));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(page.adjusted(-line / 2, -line / 2, line / 2, line / 2));
}

} // namespace paperline
