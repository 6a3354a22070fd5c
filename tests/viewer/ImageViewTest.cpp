#include "viewer/ImageView.h"

#include "ViewerTestFiles.h"
#include "tests/support/TraceRecording.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

namespace paperline {
namespace {

const QColor grey(191, 191, 191);

std::shared_ptr<const PageRaster> raster(const QImage& image) {
    return std::make_shared<PageRaster>(PageRaster{
        image, {static_cast<uint32_t>(image.width()), static_cast<uint32_t>(image.height())}});
}

PageProperties properties(int64_t orientation, double dpiWidth = 72, double dpiHeight = 72) {
    return {dpiWidth, dpiHeight, orientation};
}

QImage drawn(ImageView& view) {
    return view.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// The rectangle that is neither the grey around the page nor the page's fine edge.
QRect pageArea(const QImage& image) {
    QRect area;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y).hsvSaturation() > 40)
                area |= QRect(x, y, 1, 1);
    return area;
}

struct Corners {
    QColor topLeft, topRight, bottomLeft, bottomRight;
};

Corners corners(const QImage& image, const QRect& area) {
    const int dx = area.width() / 4, dy = area.height() / 4;
    return {image.pixelColor(area.left() + dx, area.top() + dy),
            image.pixelColor(area.right() - dx, area.top() + dy),
            image.pixelColor(area.left() + dx, area.bottom() - dy),
            image.pixelColor(area.right() - dx, area.bottom() - dy)};
}

// Where the four quarters of a stored page belong on screen, by the standard's own words: which
// side of the picture the first row and the first column are.
constexpr Qt::GlobalColor r = Qt::red, g = Qt::green, b = Qt::blue, y = Qt::yellow;
constexpr std::array<std::array<Qt::GlobalColor, 4>, 8> upright{{
    {r, g, b, y}, // 1: row 0 top, column 0 left
    {g, r, y, b}, // 2: row 0 top, column 0 right
    {y, b, g, r}, // 3: row 0 bottom, column 0 right
    {b, y, r, g}, // 4: row 0 bottom, column 0 left
    {r, b, g, y}, // 5: row 0 left, column 0 top
    {b, r, y, g}, // 6: row 0 right, column 0 top
    {y, g, b, r}, // 7: row 0 right, column 0 bottom
    {g, y, r, b}, // 8: row 0 left, column 0 bottom
}};

void expectUpright(const QImage& image, const QRect& area, int orientation) {
    const auto& wanted = upright[static_cast<size_t>(orientation - 1)];
    const Corners found = corners(image, area);
    EXPECT_EQ(found.topLeft, QColor(wanted[0])) << orientation;
    EXPECT_EQ(found.topRight, QColor(wanted[1])) << orientation;
    EXPECT_EQ(found.bottomLeft, QColor(wanted[2])) << orientation;
    EXPECT_EQ(found.bottomRight, QColor(wanted[3])) << orientation;
}

// Where a stored pixel belongs on the upright page.
QPoint onScreen(QPoint stored, QSize size, int orientation) {
    const int column = stored.x(), row = stored.y();
    const int fromRight = size.width() - 1 - column, fromBottom = size.height() - 1 - row;
    switch (orientation) {
    case 2:
        return {fromRight, row};
    case 3:
        return {fromRight, fromBottom};
    case 4:
        return {column, fromBottom};
    case 5:
        return {row, column};
    case 6:
        return {fromBottom, column};
    case 7:
        return {fromBottom, fromRight};
    case 8:
        return {row, fromRight};
    default:
        return stored;
    }
}

TEST(ImageViewDrawing, FillsWithTheGreyWithoutAPage) {
    ImageView view;
    view.resize(50, 40);
    const QImage image = drawn(view);
    EXPECT_EQ(image.pixelColor(0, 0), grey);
    EXPECT_EQ(image.pixelColor(49, 39), grey);
    EXPECT_TRUE(pageArea(image).isEmpty());
}

TEST(ImageViewDrawing, ActualSizeIsPixelForPixelInAllEightOrientations) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        ImageView view;
        view.resize(400, 350);
        view.setFitorAcutalImage(2);
        view.setImage(raster(quarters(200, 300)), properties(orientation));
        const QImage image = drawn(view);
        const QSize size = orientation < 5 ? QSize(200, 300) : QSize(300, 200);
        EXPECT_EQ(pageArea(image), QRect(QPoint(5, 5), size)) << orientation;
        expectUpright(image, QRect(QPoint(5, 5), size), orientation);
    }
}

TEST(ImageViewDrawing, FitFillsTheViewInAllEightOrientations) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        ImageView view;
        view.resize(170, 170); // 150 inside the margins: half of 300
        view.setImage(raster(quarters(200, 300)), properties(orientation));
        const QImage image = drawn(view);
        const QSize size = orientation < 5 ? QSize(100, 150) : QSize(150, 100);
        EXPECT_EQ(pageArea(image), QRect(QPoint(5, 5), size)) << orientation;
        expectUpright(image, QRect(QPoint(5, 5), size), orientation);
    }
}

TEST(ImageViewDrawing, FitEnlargesASmallPage) {
    ImageView view;
    view.resize(420, 620);
    view.setImage(raster(quarters(20, 30)), properties(1));
    EXPECT_EQ(pageArea(drawn(view)), QRect(5, 5, 400, 600));
}

TEST(ImageViewDrawing, TwoHundredByOneHundredDpiIsTwiceAsTall) {
    ImageView view;
    view.resize(220, 1020);
    view.setImage(raster(quarters(100, 100)), properties(1, 200, 100));
    EXPECT_EQ(pageArea(drawn(view)), QRect(5, 5, 200, 400));
    view.setFitorAcutalImage(2);
    EXPECT_EQ(pageArea(drawn(view)), QRect(5, 5, 100, 200));
}

TEST(ImageViewDrawing, OneHundredByTwoHundredDpiIsTwiceAsWide) {
    ImageView view;
    view.resize(420, 1020);
    view.setImage(raster(quarters(100, 100)), properties(1, 100, 200));
    EXPECT_EQ(pageArea(drawn(view)), QRect(5, 5, 400, 200));
    view.setImage(raster(quarters(100, 100)), properties(6, 100, 200));
    EXPECT_EQ(pageArea(drawn(view)).size(), QSize(400, 800));
}

TEST(ImageViewDrawing, StretchesTheActualPageTooAndKeepsItUpright) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        ImageView view;
        view.resize(700, 700);
        view.setFitorAcutalImage(2);
        view.setImage(raster(quarters(200, 300)), properties(orientation, 300, 150));
        const QImage image = drawn(view);
        const QSize size = orientation < 5 ? QSize(200, 600) : QSize(600, 200);
        EXPECT_EQ(pageArea(image), QRect(QPoint(5, 5), size)) << orientation;
        expectUpright(image, QRect(QPoint(5, 5), size), orientation);
    }
}

TEST(ImageViewDrawing, KeepsEveryPixelOfThePageAtActualSize) {
    QImage page(37, 23, QImage::Format_RGB32);
    for (int row = 0; row < page.height(); ++row)
        for (int column = 0; column < page.width(); ++column)
            page.setPixelColor(column, row, QColor(column * 6, row * 10, (column * row) % 256));
    ImageView view;
    view.resize(100, 100);
    view.setFitorAcutalImage(2);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        view.setImage(raster(page), properties(orientation));
        const QImage image = drawn(view);
        for (int row = 0; row < page.height(); ++row)
            for (int column = 0; column < page.width(); ++column)
                ASSERT_EQ(image.pixelColor(QPoint(5, 5) +
                                           onScreen({column, row}, page.size(), orientation)),
                          page.pixelColor(column, row))
                    << orientation << ": " << column << ", " << row;
    }
}

TEST(ImageViewDrawing, AveragesWhenItShrinks) {
    // Columns alternate between black and white: sampling one of them would show stripes.
    QImage page(1200, 1200, QImage::Format_RGB32);
    for (int row = 0; row < page.height(); ++row)
        for (int column = 0; column < page.width(); ++column)
            page.setPixel(column, row, column % 2 == 0 ? 0xFF000000U : 0xFFFFFFFFU);
    ImageView view;
    view.resize(170, 170);
    view.setImage(raster(page), properties(1));
    const QImage image = drawn(view);
    for (int column = 10; column < 150; ++column)
        EXPECT_NEAR(image.pixelColor(column, 80).red(), 128, 24) << column;
}

TEST(ImageViewDrawing, HasAFineEdgeAroundThePage) {
    QImage page(50, 50, QImage::Format_RGB32);
    page.fill(grey);
    ImageView view;
    view.resize(100, 100);
    view.setFitorAcutalImage(2);
    view.setImage(raster(page), properties(1));
    const QImage image = drawn(view);
    EXPECT_LT(image.pixelColor(4, 30).red(), 180);
    EXPECT_LT(image.pixelColor(55, 30).red(), 180);
    EXPECT_LT(image.pixelColor(30, 4).red(), 180);
    EXPECT_LT(image.pixelColor(30, 55).red(), 180);
    EXPECT_EQ(image.pixelColor(5, 5), grey);
    EXPECT_EQ(image.pixelColor(3, 30), grey);
}

TEST(ImageViewDrawing, SurvivesSizesNoSurfaceHas) {
    ImageView view;
    view.resize(300, 200);
    for (const double dpi : {1e-30, 1e30, 4294967295.0})
        for (const int mode : {1, 2}) {
            view.setFitorAcutalImage(mode);
            view.setImage(raster(quarters(20, 30)), properties(5, dpi, 72));
            EXPECT_EQ(drawn(view).pixelColor(299, 199), grey);
        }
    const auto claimed =
        std::make_shared<PageRaster>(PageRaster{quarters(8, 8), {4294967295U, 4294967295U}});
    view.setImage(claimed, properties(3));
    EXPECT_EQ(drawn(view).pixelColor(299, 199), grey);
    view.resize(1, 1);
    drawn(view);
}

TEST(ImageView, AnswersDefaultsForMissingProperties) {
    ImageView view;
    EXPECT_EQ(view.dpiWidth(), 72);
    EXPECT_EQ(view.dpiHeight(), 72);
    EXPECT_EQ(view.orientation(), 1);
    EXPECT_TRUE(view.isOpaque());
    view.setImage(raster(quarters(4, 4)), properties(9, 0, 300));
    EXPECT_EQ(view.dpiWidth(), 72);
    EXPECT_EQ(view.dpiHeight(), 300);
    EXPECT_EQ(view.orientation(), 1);
}

TEST(ImageView, ImageTransformsFollowTheArithmetic) {
    ImageView view;
    view.resize(320, 1000);
    view.setImage(raster(quarters(200, 300)), properties(6, 200, 100));
    EXPECT_EQ(view.imageTransform(), (AffineTransform{0, -1, 2, 0, 0, 200}));
    EXPECT_EQ(view.imageTransformToFitView(), (AffineTransform{0, -0.5, 1, 0, 0, 100}));
    view.setFitorAcutalImage(2);
    EXPECT_EQ(view.imageTransformToFitView(), view.imageTransform());
}

TEST(ImageView, TheHandleGoesAfterOneDrawAndRepaintsStillShowThePage) {
    ImageView view;
    view.resize(100, 100);
    view.setFitorAcutalImage(2);
    view.setRelaseCGImageRef(1);
    view.setImage(raster(quarters(40, 40)), properties(1));
    EXPECT_TRUE(view.mImage);
    const QImage first = drawn(view);
    EXPECT_FALSE(view.mImage);
    EXPECT_EQ(view.mRelaseCGImageRef, 0);
    EXPECT_EQ(drawn(view), first);
    EXPECT_EQ(pageArea(first), QRect(5, 5, 40, 40));
}

TEST(ImageView, WithoutTheFlagTheHandleStays) {
    ImageView view;
    view.resize(100, 100);
    view.setImage(raster(quarters(40, 40)), properties(1));
    drawn(view);
    EXPECT_TRUE(view.mImage);
}

TEST(ImageView, LiveResizingDrawsFastAndKeepsTheHandle) {
    QImage page(1000, 1000, QImage::Format_RGB32);
    for (int row = 0; row < page.height(); ++row)
        for (int column = 0; column < page.width(); ++column)
            page.setPixel(column, row, (column + row) % 2 == 0 ? 0xFF000000U : 0xFFFFFFFFU);
    ImageView view;
    view.resize(170, 170);
    view.setRelaseCGImageRef(1);
    view.setImage(raster(page), properties(1));
    view.viewWillStartLiveResize();
    const int sampled = drawn(view).pixelColor(80, 80).red();
    EXPECT_TRUE(sampled == 0 || sampled == 255) << sampled; // one pixel, not an average
    EXPECT_TRUE(view.mImage);
    view.viewDidEndLiveResize();
    EXPECT_FALSE(view.mLiveResizing);
    EXPECT_NEAR(drawn(view).pixelColor(80, 80).red(), 128, 24);
    EXPECT_FALSE(view.mImage);
}

TEST(ImageView, TracesItsDrawing) {
    testing_support::TraceRecording trace;
    ImageView view;
    view.resize(100, 100);
    view.setImage(raster(quarters(10, 10)), properties(1));
    trace.clear();
    drawn(view);
    EXPECT_EQ(trace.entries(),
              (std::vector<std::string>{"In  1: drawRect",
                                        "    0: viewBounds.origin.x",
                                        "    5: FIT_IAMGE tx",
                                        "Out 1: drawRect"}));
    view.setFitorAcutalImage(2);
    trace.clear();
    drawn(view);
    EXPECT_EQ(trace.entries().at(2), "    5: ACTUAL_IMAGE tx");
}

class ImageViewFiles : public ::testing::Test {
protected:
    ImageViewFiles() {
        view_.resize(300, 300);
        view_.setFitorAcutalImage(2);
        writeJpeg(folder_.file("a.jpg"), quarters(40, 60), ExifValues{6, 200, 100, true});
    }

    TemporaryFolder folder_;
    ImageView view_;
};

TEST_F(ImageViewFiles, LoadsAPageWithItsProperties) {
    EXPECT_EQ(view_.setImagePath(folder_.file("a.jpg"), 0), PageLoadError::none);
    EXPECT_EQ(view_.orientation(), 6);
    EXPECT_EQ(view_.pagePixels(), (PixelSize{40, 60}));
}

TEST_F(ImageViewFiles, APdfPageHasNoProperties) {
    ASSERT_EQ(view_.setImagePath(folder_.file("a.jpg"), 0), PageLoadError::none);
    writePdf(folder_.file("a.pdf"), {{120, 80, "1 0 0"}});
    ASSERT_EQ(view_.setImagePath(folder_.file("a.pdf"), 0), PageLoadError::none);
    EXPECT_EQ(view_.orientation(), 1);
    EXPECT_EQ(view_.dpiWidth(), 72);
    EXPECT_EQ(pageArea(drawn(view_)), QRect(5, 5, 120, 80));
}

TEST_F(ImageViewFiles, AFileThatCannotBeOpenedChangesNothing) {
    ASSERT_EQ(view_.setImagePath(folder_.file("a.jpg"), 0), PageLoadError::none);
    const QImage before = drawn(view_);
    writeText(folder_.file("text.jpg"), "no picture");
    EXPECT_EQ(view_.setImagePath(folder_.file("none.jpg"), 0), PageLoadError::cannotOpen);
    EXPECT_EQ(view_.setImagePath(folder_.file("none.pdf"), 0), PageLoadError::cannotOpen);
    EXPECT_EQ(view_.setImagePath(folder_.file("text.jpg"), 0), PageLoadError::notAPicture);
    EXPECT_EQ(drawn(view_), before);
}

TEST_F(ImageViewFiles, APdfPageThatCannotBeDrawnShowsNoPage) {
    ASSERT_EQ(view_.setImagePath(folder_.file("a.jpg"), 0), PageLoadError::none);
    writeText(folder_.file("text.pdf"), "no document");
    EXPECT_EQ(view_.setImagePath(folder_.file("text.pdf"), 0), PageLoadError::notAPicture);
    EXPECT_TRUE(pageArea(drawn(view_)).isEmpty());
    EXPECT_EQ(view_.pagePixels(), PixelSize{});
}

TEST_F(ImageViewFiles, AShownPageNoLongerNeedsItsFile) {
    ASSERT_EQ(view_.setImagePath(folder_.file("a.jpg"), 0), PageLoadError::none);
    const QImage before = drawn(view_);
    std::filesystem::remove(folder_.file("a.jpg"));
    EXPECT_EQ(drawn(view_), before);
}

} // namespace
} // namespace paperline
