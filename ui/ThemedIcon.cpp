#include "ui/ThemedIcon.h"

#include <QApplication>
#include <QFileInfo>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <cmath>
#include <utility>

namespace paperline {
namespace {

constexpr int neutralSpread = 24;        // between the channels of what counts as grey
constexpr double disabledOpacity = 0.45; // of coloured strokes

bool isNeutral(QRgb pixel) {
    const auto [low, high] = std::minmax({qRed(pixel), qGreen(pixel), qBlue(pixel)});
    return high - low < neutralSpread;
}

QImage tinted(QImage picture, const QColor& colour, bool disabled) {
    picture = std::move(picture).convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb pixel = line[x];
            if (isNeutral(pixel)) {
                const int alpha = qAlpha(pixel) * colour.alpha() / 255;
                line[x] = qRgba(colour.red(), colour.green(), colour.blue(), alpha);
            } else if (disabled) {
                const int alpha = static_cast<int>(qAlpha(pixel) * disabledOpacity);
                line[x] = qRgba(qRed(pixel), qGreen(pixel), qBlue(pixel), alpha);
            }
        }
    }
    return picture;
}

class ThemedIconEngine : public QIconEngine {
public:
    ThemedIconEngine(QImage normal, QImage fine, QPalette::ColorRole role)
        : normal_(std::move(normal)), fine_(std::move(fine)), role_(role) {}

    QIconEngine* clone() const override { return new ThemedIconEngine(*this); }
    bool isNull() override { return normal_.isNull(); }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return {normal_.size()}; }
    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override {
        return normal_.size().scaled(size, Qt::KeepAspectRatio);
    }

    // The size is in device pixels.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        const bool fine = size.width() > normal_.width() && !fine_.isNull();
        QImage picture = fine ? fine_ : normal_;
        if (picture.size() != size)
            picture = picture.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        const bool disabled = mode == QIcon::Disabled;
        const QColor colour =
            QApplication::palette().color(disabled ? QPalette::Disabled : QPalette::Active,
                                          disabled ? QPalette::WindowText : role_);
        return QPixmap::fromImage(tinted(std::move(picture), colour, disabled));
    }

    void
    paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const double ratio = painter->device()->devicePixelRatioF();
        QPixmap picture = pixmap(rect.size() * ratio, mode, state);
        picture.setDevicePixelRatio(ratio);
        painter->drawPixmap(rect.topLeft(), picture);
    }

private:
    QImage normal_;
    QImage fine_;
    QPalette::ColorRole role_;
};

QString finePathOf(const QString& path) {
    const QFileInfo file(path);
    return file.path() + "/" + file.completeBaseName() + "@2x." + file.suffix();
}

} // namespace

QIcon themedIcon(const std::string& path, QPalette::ColorRole role) {
    const QString normalPath = QString::fromStdString(path);
    QImage normal(normalPath);
    if (normal.isNull())
        return {};
    QImage fine(finePathOf(normalPath));
    // Qt takes a ratio of 2 from the name "@2x"; the sizes here are in pixels.
    normal.setDevicePixelRatio(1);
    fine.setDevicePixelRatio(1);
    return QIcon(new ThemedIconEngine(std::move(normal), std::move(fine), role));
}

} // namespace paperline
