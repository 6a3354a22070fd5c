#include "viewer/PdfPages.h"

#include "viewer/FileState.h"

#include <QFile>
#include <QPainter>
#include <QPdfDocument>

#include <algorithm>
#include <cmath>

namespace paperline {

namespace {

constexpr int maximumSidePixels = 16384;

uint32_t pixelsOf(double points) {
    if (!std::isfinite(points) || points <= 0)
        return 0;
    return static_cast<uint32_t>(std::clamp(std::round(points), 1.0, 1e9));
}

QSize pictureSize(PixelSize page, int longSidePixels) {
    const double longSide = std::max(page.width, page.height);
    const double scale = std::clamp(longSidePixels, 1, maximumSidePixels) / longSide;
    const auto side = [scale](uint32_t pixels) {
        return std::max(1, static_cast<int>(std::lround(pixels * scale)));
    };
    return {side(page.width), side(page.height)};
}

} // namespace

PdfPages::PdfPages() = default;
PdfPages::~PdfPages() = default;

bool PdfPages::open(const std::string& path) {
    document_.reset();
    if (!fileState(path))
        return false; // reading a pipe would not end
    auto document = std::make_unique<QPdfDocument>();
    if (document->load(QFile::decodeName(path.c_str())) != QPdfDocument::Error::None ||
        document->pageCount() < 1)
        return false;
    document_ = std::move(document);
    return true;
}

int PdfPages::count() const {
    return document_ ? document_->pageCount() : 0;
}

PixelSize PdfPages::pixelSize(int pageIndex) const {
    if (pageIndex < 0 || pageIndex >= count())
        return {};
    const QSizeF points = document_->pagePointSize(pageIndex);
    return {pixelsOf(points.width()), pixelsOf(points.height())};
}

QImage PdfPages::draw(int pageIndex, int longSidePixels) const {
    const PixelSize page = pixelSize(pageIndex);
    if (page.width == 0 || page.height == 0)
        return {};
    const QSize size = pictureSize(page, longSidePixels);
    QImage white(size, QImage::Format_RGB32);
    if (white.isNull())
        return {};
    white.fill(Qt::white);
    // Transparent where the page is empty, and everywhere when its picture is damaged.
    const QImage drawn = document_->render(pageIndex, size);
    if (drawn.isNull())
        return {};
    QPainter painter(&white);
    painter.drawImage(QPoint(0, 0), drawn);
    return white;
}

} // namespace paperline
