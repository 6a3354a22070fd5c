// Draws one row of the page list: thumbnail and caption.
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

    // `fill` sets the content before a row is drawn. Without it the cell takes the model's
    // CellInfo.
    void setWillDisplayCell(std::function<void(int row)> fill) {
        willDisplayCell_ = std::move(fill);
    }

    // Rectangles of the present content in the cell frame `bounds`. The page's pixel size is read
    // from its file each time.
    Rect imageRectForBounds(const Rect& bounds) const;
    Rect titleRectForBounds(const Rect& bounds) const;
    Rect subtitleRectForBounds(const Rect& bounds,
                               const Rect& titleBounds,
                               const Rect& imageBounds) const;
    // Nothing without a subtitle.
    std::optional<AttributedCaption> attributedSubtitleValue(bool highlighted,
                                                             const QColor& background) const;
    // Light grey while highlighted, else grey; each changed until it is readable.
    static QColor captionColour(bool highlighted, const QColor& background);
    // The background of a highlighted row, dark enough for the light grey caption.
    static QColor highlightColour(const QColor& paletteHighlight);

    // Room for a thumbnail and the caption at its lower position.
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
