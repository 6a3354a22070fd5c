// Shows one page on grey, fitted into the view or one pixel a point. The arithmetic has the y axis
// growing upward; drawing turns it over once.
#pragma once

#include "viewer/PageTransform.h"
#include "viewer/PagesAhead.h"

#include <QWidget>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace paperline {

class ImageView : public QWidget {
    Q_OBJECT

public:
    explicit ImageView(QWidget* parent = nullptr);

    static QColor surroundings(); // the grey around the page

    // Loads the page and shows it. A file that cannot be loaded changes nothing, but a page of a
    // PDF file that cannot be drawn shows no page. The answer says what happened.
    PageLoadError setImagePath(const std::string& path, int imageIndex);
    // The page that was asked for last, and those that the next calls will probably name.
    void expectPages(const PagePlace& shown, const std::vector<PagePlace>& next) {
        pagesAhead_.expect(shown, next);
    }
    void setImage(std::shared_ptr<const PageRaster> image, const PageProperties& withMetadata);

    float dpiWidth() const;
    float dpiHeight() const;
    int orientation() const;
    AffineTransform imageTransform() const;
    AffineTransform imageTransformToFitView() const;

    void setFitorAcutalImage(int mode);  // 1 fit, otherwise actual size
    void setRelaseCGImageRef(int value); // 1: the next completed draw lets mImage go
    void viewWillStartLiveResize();
    void viewDidEndLiveResize();
    Rect getFrameRect() const { return mFrameRect; }
    void setFrameRect(const Rect& frame) { mFrameRect = frame; }
    bool isOpaque() const { return true; }
    void newScreenProfile() {}

    // The page's size as the arithmetic counts it; 0 x 0 without a page.
    PixelSize pagePixels() const;

    std::shared_ptr<const PageRaster> mImage; // may be let go after a draw
    PageProperties mMeta;
    bool mLiveResizing = false;
    Rect mFrameRect;
    uint8_t mFitorActualImage = 1;
    uint8_t mRelaseCGImageRef = 0;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawRect(QPainter& painter);
    void drawPage(QPainter& painter, const PagePlacement& placement);
    void drawEdge(QPainter& painter, const PagePlacement& placement) const;
    bool drawsReduced(const PagePlacement& placement) const;
    const QImage& reducedPage(const PagePlacement& placement);
    void tracePlacement(const PagePlacement& placement) const;

    std::shared_ptr<const PageRaster> shown_; // for repaints after mImage went
    QImage reduced_;                          // shown_, turned and at its drawn size
    PagesAhead pagesAhead_;
};

} // namespace paperline
