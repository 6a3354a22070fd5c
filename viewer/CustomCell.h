// Draws one row of the page list: thumbnail and caption, at the places that viewer/CellGeometry.h
// gives.
#pragma once

#include "codecs/pixels/Geometry.h"
#include "controller/CellInfo.h"

#include <QImage>
#include <QString>
#include <QStyledItemDelegate>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace paperline {

struct AttributedCaption {
    QString text;
    QColor foreground;
};

class CustomCell : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit CustomCell(QObject* parent = nullptr);
    // A cell with the same content, sharing the image.
    std::unique_ptr<CustomCell> copy(QObject* parent = nullptr) const;

    const QImage& image() const { return content_.image; }
    void setImage(const QImage& image) { content_.image = image; }
    const std::string& title() const { return content_.title; }
    void setTitle(const std::string& title) { content_.title = title; }
    const std::string& subtitle() const { return content_.subtitle; }
    void setSubtitle(const std::string& subtitle) { content_.subtitle = subtitle; }
    const std::string& imagePath() const { return content_.imageFullPath; }
    void setImagePath(const std::string& path) { content_.imageFullPath = path; }
    int imageIndex() const { return content_.imageIndex; }
    void setImageIndex(int index) { content_.imageIndex = index; }

    // Fills the cell before row `row` is drawn. Without one the cell takes the model's CellInfo.
    void setWillDisplayCell(std::function<void(int row)> fill) {
        willDisplayCell_ = std::move(fill);
    }

    // Rectangles for the cell's present content in the cell frame `bounds`. Looks up the page's
    // pixel size in the file on disk each time.
    Rect imageRectForBounds(const Rect& bounds) const;
    Rect titleRectForBounds(const Rect& bounds) const;
    Rect subtitleRectForBounds(const Rect& bounds,
                               const Rect& titleBounds,
                               const Rect& imageBounds) const;
    // What the caption says and in which colour; nothing without a subtitle.
    std::optional<AttributedCaption> attributedSubtitleValue(bool highlighted,
                                                             const QColor& background) const;
    // The caption's colour: light grey while highlighted, grey otherwise, each as far from the
    // background as reading needs.
    static QColor captionColour(bool highlighted, const QColor& background);
    // The colour behind a highlighted row: the given one, dark enough for the light grey caption.
    static QColor highlightColour(const QColor& paletteHighlight);

    // Tall enough for a thumbnail and the caption in its lower place.
    static int rowHeight(const QFont& font);

    void paint(QPainter* painter,
               const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    void take(const QModelIndex& index) const;
    void drawInteriorWithFrame(QPainter& painter,
                               const QStyleOptionViewItem& option,
                               const QColor& background) const;

    mutable CellInfo content_;       // the row to draw; Qt paints through a const cell
    mutable double titleHeight_ = 0; // of the table's font

    std::function<void(int)> willDisplayCell_;
};

} // namespace paperline
