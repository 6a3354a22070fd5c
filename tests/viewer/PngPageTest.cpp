#include "viewer/PngPage.h"

#include "ViewerTestFiles.h"
#include "codecs/pictures/PictureReader.h"
#include "codecs/png/PngWriter.h"
#include "viewer/PageLoader.h"
#include "viewer/PixelConversion.h"

#include <gtest/gtest.h>

#include <random>

namespace paperline {
namespace {

class PngPage : public ::testing::Test {
protected:
    // Saved as a scan is.
    void save(int width, int height, int bits) {
        const auto page = BitmapImageRep::makePage(width, height, bits);
        std::mt19937 random(31);
        for (uint8_t& sample : page->bitmapData())
            sample = static_cast<uint8_t>(random() % 64);
        const auto file = encodePng(*page, {});
        ASSERT_TRUE(file.has_value());
        writeBytes(path(), *file);
    }
    QImage shownByOthers() const {
        const auto decoded = readPicture(path(), 0, maximumPagePixels);
        return decoded ? qtImage(*decoded->image) : QImage();
    }
    std::string path() const { return folder_.file("page.png"); }

    TemporaryFolder folder_;
};

TEST_F(PngPage, OwnPagesAreReadWhole) {
    for (const int bits : {8, 24})
        for (const int width : {1301, 2000}) {
            save(width, 900, bits);
            const QImage image = readOwnPng(path());
            ASSERT_FALSE(image.isNull()) << bits;
            EXPECT_EQ(image.format(), bits == 8 ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
            EXPECT_EQ(image, shownByOthers());
            EXPECT_EQ(loadPage(path(), 0).raster->image, image);
        }
}

TEST_F(PngPage, OtherFilesAreLeftToOthers) {
    save(30, 20, 24); // small
    EXPECT_TRUE(readOwnPng(path()).isNull());
    EXPECT_EQ(loadPage(path(), 0).raster->image, shownByOthers());
    save(6000, 900, 1);
    EXPECT_TRUE(readOwnPng(path()).isNull());
    EXPECT_EQ(loadPage(path(), 0).raster->image, shownByOthers());
    EXPECT_TRUE(readOwnPng(folder_.file("missing")).isNull());
    EXPECT_TRUE(readOwnPng(folder_.path()).isNull());
}

TEST_F(PngPage, DamagedPagesAreNotShown) {
    save(1301, 900, 24);
    Bytes file = readBytes(path());
    file[file.size() / 2] ^= 4U;
    writeBytes(path(), file);
    EXPECT_TRUE(readOwnPng(path()).isNull());
    cutTo(path(), file.size() / 2);
    EXPECT_TRUE(readOwnPng(path()).isNull());
}

} // namespace
} // namespace paperline
