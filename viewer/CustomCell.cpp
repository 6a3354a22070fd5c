#include "viewer/CustomCell.h"

#include "base/CvOutputLog.h"
#include "viewer/CellGeometry.h"
#include "viewer/Colours.h"
#include "viewer/PageListModel.h"
#include "viewer/PageLoader.h"
#include "viewer/PixelConversion.h"

#include <QAbstractScrollArea>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace paperline {

namespace {

const QColor thumbnailEdge(0, 0, 0, 50);

QRectF toQt(const Rect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

// Without the part under the list's scroll bar.
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
    result->titleHeight_ = titleHeight_;
    result->content_ = content_;
    return result;
}

Rect CustomCell::imageRectForBounds(const Rect& bounds) const {
    const TraceScope trace("imageRectForBounds");
    return paperline::imageRectForBounds(
        bounds, pagePixelSize(content_.imageFullPath, content_.imageIndex));
}

Rect CustomCell::titleRectForBounds(const Rect& bounds) const {
    const TraceScope trace("titleRectForBounds");
    return paperline::titleRectForBounds(bounds, {0, titleHeight_}); // an empty title
}

Rect CustomCell::subtitleRectForBounds(const Rect& bounds,
                                       const Rect& titleBounds,
                                       const Rect& imageBounds) const {
    const TraceScope trace("subtitleRectForBounds");
    const auto characters = static_cast<uint64_t>(QString::fromStdString(content_.subtitle).size());
    return paperline::subtitleRectForBounds(bounds, titleBounds, imageBounds, characters);
}

std::optional<AttributedCaption>
CustomCell::attributedSubtitleValue(bool highlighted, const QColor& background) const {
    const TraceScope trace("attributedSubtitleValue");
    if (content_.subtitle.empty())
        return std::nullopt;
    return AttributedCaption{QString::fromStdString(content_.subtitle),
                             captionColour(highlighted, background)};
}

QColor CustomCell::captionColour(bool highlighted, const QColor& background) {
    QColor colour(highlighted ? QColor(lightGrey, lightGrey, lightGrey) : QColor(grey, grey, grey));
    const int step = relativeLuminance(background) > relativeLuminance(colour) ? -1 : 1;
    for (int level = colour.red(); level >= 0 && level <= 255; level += step) {
        colour = QColor(level, level, level);
        if (contrastRatio(colour, background) >= readableContrast)
            break;
    }
    return colour;
}

QColor CustomCell::highlightColour(const QColor& paletteHighlight) {
    const QColor caption(lightGrey, lightGrey, lightGrey);
    QColor colour = paletteHighlight;
    for (int i = 0; i < 64 && contrastRatio(caption, colour) < readableContrast; ++i)
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
    content_ = info != nullptr ? *info : CellInfo{};
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
    // Covers the table's own highlight, which is too light for the caption.
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
    const TraceScope trace("drawInteriorWithFrame");
    const Rect cell = rectOf(option.rect);
    const Rect imageRect = imageRectForBounds(cell);
    if (isDrawable(imageRect)) {
        if (content_.image.isNull()) {
            painter.fillRect(toQt(imageRect), QColor(grey, grey, grey));
        } else {
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(toQt(imageRect), content_.image);
        }
        painter.setPen(QPen(thumbnailEdge, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(toQt(imageRect).adjusted(-0.5, -0.5, 0.5, 0.5));
    }
    const Rect titleRect = titleRectForBounds(cell);
    const Rect captionRect = subtitleRectForBounds(cell, titleRect, imageRect);
    const bool highlighted = (option.state & QStyle::State_Selected) != 0;
    const auto caption = attributedSubtitleValue(highlighted, background);
    if (!caption || !isDrawable(captionRect))
        return;
    painter.setPen(caption->foreground);
    painter.setFont(option.font);
    // File names run from left to right in every language.
    painter.drawText(toQt(captionRect),
                     Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignTop | Qt::TextSingleLine |
                         Qt::TextForceLeftToRight,
                     caption->text);
}

} // namespace paperline
