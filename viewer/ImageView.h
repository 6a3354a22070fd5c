// Shows one page on grey, fitted into the view or at one point per pixel. Transforms are those of
// viewer/PageTransform.h.
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

    // Loads and shows the page. On failure the page on show stays, except that a PDF page that
    // cannot be drawn leaves the view empty.
    PageLoadError setImagePath(const std::string& path, int imageIndex);
    // `next` are the pages that will probably be shown next.
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
    void setRelaseCGImageRef(int value); // 1: the next completed draw releases mImage
    void viewWillStartLiveResize();
    void viewDidEndLiveResize();
    Rect getFrameRect() const { return mFrameRect; }
    void setFrameRect(const Rect& frame) { mFrameRect = frame; }
    bool isOpaque() const { return true; }
    void newScreenProfile() {}

    // 0 x 0 without a page.
    PixelSize pagePixels() const;

    std::shared_ptr<const PageRaster> mImage; // null once released
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

    std::shared_ptr<const PageRaster> shown_; // mImage, also after its release
    QImage reduced_;                          // shown_, upright and of the drawn size
    PagesAhead pagesAhead_;
};

} // namespace paperline
