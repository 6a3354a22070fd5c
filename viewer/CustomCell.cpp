#include "viewer/CustomCell.h"

#include "viewer/CellGeometry.h"
#include "viewer/PageListModel.h"
#include "viewer/PageLoader.h"

#include <QAbstractScrollArea>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace paperline {

namespace {

constexpr double readableContrast = 4.5;
const QColor thumbnailEdge(0, 0, 0, 50);

Rect fromQt(const QRect& rect) {
    return {static_cast<double>(rect.x()),
            static_cast<double>(rect.y()),
            static_cast<double>(rect.width()),
            static_cast<double>(rect.height())};
}

QRectF toQt(const Rect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

// Relative luminance and contrast as accessibility guidelines define them.
double luminance(const QColor& colour) {
    const auto linear = [](float channel) {
        const double value = static_cast<double>(channel);
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& first, const QColor& second) {
    const double a = luminance(first), b = luminance(second);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

// A scroller of the list lies over the cell's end.
QRect visiblePart(const QStyleOptionViewItem& option) {
    const auto* list = qobject_cast<const QAbstractScrollArea*>(option.widget);
    QRect visible = option.rect;
    if (list != nullptr)
        visible.setRight(std::min(visible.right(), list->viewport()->width() - 1));
    return visible;
}

constexpr int grey = 128;
constexpr int lightGrey = 211;

} // namespace

CustomCell::CustomCell(QObject* parent) : QStyledItemDelegate(parent) {}

std::unique_ptr<CustomCell> CustomCell::copy(QObject* parent) const {
    auto result = std::make_unique<CustomCell>(parent);
    result->willDisplayCell_ = willDisplayCell_;
    result->trace_ = trace_;
    result->titleHeight_ = titleHeight_;
    result->setTitle(title_);
    result->setImage(image_);
    result->setSubtitle(subtitle_);
    result->setImagePath(imagePath_);
    result->setImageIndex(imageIndex_);
    return result;
}

Rect CustomCell::imageRectForBounds(const Rect& bounds) const {
    const ViewTraceScope trace(trace_, "imageRectForBounds");
    return paperline::imageRectForBounds(bounds, pagePixelSize(imagePath_, imageIndex_));
}

Rect CustomCell::titleRectForBounds(const Rect& bounds) const {
    const ViewTraceScope trace(trace_, "titleRectForBounds");
    return paperline::titleRectForBounds(bounds, {0, titleHeight_}); // an empty line of text
}

Rect CustomCell::subtitleRectForBounds(const Rect& bounds,
                                       const Rect& titleBounds,
                                       const Rect& imageBounds) const {
    const ViewTraceScope trace(trace_, "subtitleRectForBounds");
    const auto characters = static_cast<uint64_t>(QString::fromStdString(subtitle_).size());
    return paperline::subtitleRectForBounds(bounds, titleBounds, imageBounds, characters);
}

std::optional<AttributedCaption>
CustomCell::attributedSubtitleValue(bool highlighted, const QColor& background) const {
    const ViewTraceScope trace(trace_, "attributedSubtitleValue");
    if (subtitle_.empty())
        return std::nullopt;
    return AttributedCaption{QString::fromStdString(subtitle_),
                             captionColour(highlighted, background)};
}

QColor CustomCell::captionColour(bool highlighted, const QColor& background) {
    QColor colour(highlighted ? QColor(lightGrey, lightGrey, lightGrey) : QColor(grey, grey, grey));
    const int step = luminance(background) > luminance(colour) ? -1 : 1;
    for (int level = colour.red(); level >= 0 && level <= 255; level += step) {
        colour = QColor(level, level, level);
        if (contrast(colour, background) >= readableContrast)
            break;
    }
    return colour;
}

QColor CustomCell::highlightColour(const QColor& paletteHighlight) {
    const QColor caption(lightGrey, lightGrey, lightGrey);
    QColor colour = paletteHighlight;
    for (int i = 0; i < 64 && contrast(caption, colour) < readableContrast; ++i)
        colour = colour.darker(104);
    return colour;
}

int CustomCell::rowHeight(const QFont& font) {
    constexpr double besidesText = 5 + 5 + 146 + 8;
    return static_cast<int>(std::ceil(besidesText + 2 * QFontMetricsF(font).height()));
}

QSize CustomCell::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    constexpr int landscapeRight = 45 + 128 + 12;
    return {landscapeRight, rowHeight(option.font)};
}

void CustomCell::take(const QModelIndex& index) const {
    if (willDisplayCell_) {
        willDisplayCell_(index.row());
        return;
    }
    const auto* info = index.data(PageListModel::CellInfoRole).value<const CellInfo*>();
    const CellInfo none;
    const CellInfo& shown = info != nullptr ? *info : none;
    image_ = shown.image;
    title_ = shown.title;
    subtitle_ = shown.subtitle;
    imagePath_ = shown.imageFullPath;
    imageIndex_ = shown.imageIndex;
}

void CustomCell::paint(QPainter* painter,
                       const QStyleOptionViewItem& option,
                       const QModelIndex& index) const {
    take(index);
    titleHeight_ = QFontMetricsF(option.font).height();
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    const QPalette::ColorGroup group =
        (option.state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
    const QColor background =
        selected ? highlightColour(option.palette.color(group, QPalette::Highlight))
                 : option.palette.color(group, QPalette::Base);
    painter->save();
    painter->setClipRect(option.rect);
    // The table has painted its own highlight, in a colour too light for the caption.
    painter->fillRect(option.rect, option.palette.color(group, QPalette::Base));
    if (selected) {
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(background);
        painter->drawRoundedRect(QRectF(visiblePart(option)).adjusted(4, 2, -4, -2), 6, 6);
        painter->setRenderHint(QPainter::Antialiasing, false);
    }
    drawInteriorWithFrame(*painter, option, background);
    painter->restore();
}

void CustomCell::drawInteriorWithFrame(QPainter& painter,
                                       const QStyleOptionViewItem& option,
                                       const QColor& background) const {
    const ViewTraceScope trace(trace_, "drawInteriorWithFrame");
    const Rect cell = fromQt(option.rect);
    const Rect imageRect = imageRectForBounds(cell);
    if (isDrawable(imageRect)) {
        if (image_.isNull()) {
            painter.fillRect(toQt(imageRect), QColor(grey, grey, grey));
        } else {
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(toQt(imageRect), image_);
        }
        painter.setPen(QPen(thumbnailEdge, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(toQt(imageRect).adjusted(-0.5, -0.5, 0.5, 0.5));
    }
    // The title line is always empty: nothing of it is drawn.
    const Rect titleRect = titleRectForBounds(cell);
    const Rect captionRect = subtitleRectForBounds(cell, titleRect, imageRect);
    const bool highlighted = (option.state & QStyle::State_Selected) != 0;
    const auto caption = attributedSubtitleValue(highlighted, background);
    if (!caption || !isDrawable(captionRect))
        return;
    painter.setPen(caption->foreground);
    painter.setFont(option.font);
    // File names and sizes read from left to right in every interface language.
    painter.drawText(toQt(captionRect),
                     Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignTop | Qt::TextSingleLine |
                         Qt::TextForceLeftToRight,
                     caption->text);
}

} // namespace paperline
