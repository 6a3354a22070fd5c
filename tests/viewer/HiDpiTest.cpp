// Runs at two device pixels a point.
#include "PageWindow.h"
#include "viewer/ImageView.h"

#include <gtest/gtest.h>

namespace paperline {
namespace {

// Before main makes the application.
const bool scaled = qputenv("QT_SCALE_FACTOR", "2");

std::shared_ptr<const PageRaster> raster(const QImage& image) {
    return std::make_shared<PageRaster>(PageRaster{
        image, {static_cast<uint32_t>(image.width()), static_cast<uint32_t>(image.height())}});
}

QImage stripes(int side) {
    QImage image(side, side, QImage::Format_RGB32);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y, x % 2 == 0 ? 0xFFFF0000U : 0xFF0000FFU);
    return image;
}

TEST(HiDpi, TheScreenHasTwoPixelsAPoint) {
    ASSERT_TRUE(scaled);
    ImageView view;
    ASSERT_EQ(view.devicePixelRatioF(), 2.0);
}

TEST(HiDpi, AFittedPageUsesEveryDevicePixel) {
    ImageView view;
    view.resize(70, 70); // 50 points inside the margins, 100 device pixels
    view.setImage(raster(stripes(100)), {});
    const QImage image = view.grab().toImage();
    ASSERT_EQ(image.size(), QSize(140, 140));
    for (int x = 0; x < 100; ++x)
        EXPECT_EQ(image.pixelColor(10 + x, 60), x % 2 == 0 ? QColor(Qt::red) : QColor(Qt::blue))
            << x;
    EXPECT_EQ(image.pixelColor(8, 60).rgb(), image.pixelColor(2, 60).rgb()); // the edge is fine
    EXPECT_NE(image.pixelColor(9, 60).rgb(), image.pixelColor(2, 60).rgb());
}

TEST(HiDpi, ActualSizeIsOnePixelAPoint) {
    ImageView view;
    view.resize(70, 70);
    view.setFitorAcutalImage(2);
    view.setImage(raster(quarters(20, 20)), {});
    const QImage image = view.grab().toImage();
    EXPECT_EQ(image.pixelColor(10, 10), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(49, 49), QColor(Qt::yellow));
    EXPECT_NE(image.pixelColor(52, 30), QColor(Qt::green));
}

class HiDpiList : public PageWindow {};

TEST_F(HiDpiList, ThumbnailsAreFiner) {
    addPicture("a.bmp", quarters(1000, 500));
    controller_.GetImageFromImageFolder();
    EXPECT_EQ(controller_.cellInfos.at(0).image.size(), QSize(256, 128));
}

} // namespace
} // namespace paperline
