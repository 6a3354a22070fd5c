#include "viewer/BmpPage.h"

#include "ViewerTestFiles.h"
#include "viewer/PixelConversion.h"

#include <gtest/gtest.h>

#include <QFile>

#include <unistd.h>

namespace paperline {
namespace {

// No two neighbours alike, in no channel.
QImage speckled(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(
                x, y, qRgb((x * 7 + y) % 256, (x + y * 5) % 256, (x * 3 + y * 11) % 256));
    return image;
}

class BmpPage : public ::testing::Test {
protected:
    std::string saved(const QImage& image) {
        const std::string path = folder_.file("page.bmp");
        EXPECT_TRUE(image.save(QString::fromStdString(path)));
        return path;
    }
    // The saved file with one byte changed.
    std::string changed(const QImage& image, qint64 at, char value) {
        const std::string path = saved(image);
        QFile file(QString::fromStdString(path));
        EXPECT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(at) && file.putChar(value));
        return path;
    }
    TemporaryFolder folder_;
};

TEST_F(BmpPage, EveryPixelIsWhereItWas) {
    for (const QSize& size :
         {QSize(1, 1), QSize(2, 3), QSize(3, 64), QSize(5, 65), QSize(97, 301)}) {
        const QImage image = speckled(size.width(), size.height());
        EXPECT_EQ(readColourBmp(saved(image.convertToFormat(QImage::Format_RGB888))), image)
            << size.width() << " x " << size.height();
    }
}

TEST_F(BmpPage, OtherFilesAreLeftToOthers) {
    const QImage image = speckled(10, 70);
    EXPECT_TRUE(readColourBmp(folder_.file("missing")).isNull());
    EXPECT_TRUE(readColourBmp(folder_.path()).isNull());
    EXPECT_TRUE(readColourBmp(saved(image.convertToFormat(QImage::Format_Grayscale8))).isNull());
    const QImage colour = image.convertToFormat(QImage::Format_RGB888);
    EXPECT_TRUE(readColourBmp(changed(colour, 0, 'X')).isNull());
    EXPECT_TRUE(readColourBmp(changed(colour, 30, 1)).isNull());      // compressed
    EXPECT_TRUE(readColourBmp(changed(colour, 25, '\xFF')).isNull()); // first row first
    EXPECT_TRUE(readColourBmp(changed(colour, 20, 1)).isNull());      // wider than the file
    EXPECT_TRUE(readColourBmp(changed(colour, 10, 2)).isNull());      // pixels in the header
    const std::string cut = saved(colour);
    EXPECT_FALSE(readColourBmp(cut).isNull());
    ASSERT_EQ(::truncate(cut.c_str(), 2000), 0);
    EXPECT_TRUE(readColourBmp(cut).isNull());
}

TEST_F(BmpPage, ColourPagesOfManyBandsAreConvertedWhole) {
    const QImage image = speckled(33, 200);
    const Image page = imageObject(image);
    ASSERT_TRUE(page.isValid());
    EXPECT_EQ(qtImage(*page.representations().front()), image);
}

} // namespace
} // namespace paperline
