#include "viewer/PageLoader.h"

#include "ViewerTestFiles.h"
#include "viewer/PixelConversion.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace paperline {
namespace {

class PageLoaderTest : public ::testing::Test {
protected:
    static PixelSize largestOf(const std::string& path) {
        const LargestPageSize largest = largestPagePixelSize(path, std::chrono::hours(1));
        EXPECT_TRUE(largest.complete);
        return largest.size;
    }

    TemporaryFolder folder_;
};

bool near(const QColor& a, const QColor& b) {
    return std::abs(a.red() - b.red()) < 12 && std::abs(a.green() - b.green()) < 12 &&
           std::abs(a.blue() - b.blue()) < 12;
}

TEST_F(PageLoaderTest, LoadsEveryKindWithItsSizeAndColours) {
    const QImage picture = quarters(40, 60);
    const std::string jpeg = folder_.file("a.jpg");
    writeJpeg(jpeg, picture);
    for (const char* name : {"a.png", "a.bmp"})
        ASSERT_TRUE(picture.save(QString::fromStdString(folder_.file(name))));
    writeTiff(folder_.file("a.tif"), {{picture}});
    for (const char* name : {"a.jpg", "a.png", "a.bmp", "a.tif"}) {
        const LoadedPage page = loadPage(folder_.file(name), 0);
        ASSERT_EQ(page.error, PageLoadError::none) << name;
        EXPECT_EQ(page.raster->pixels, (PixelSize{40, 60})) << name;
        EXPECT_EQ(page.raster->image.size(), QSize(40, 60)) << name;
        EXPECT_TRUE(near(page.raster->image.pixelColor(5, 5), Qt::red)) << name;
        EXPECT_TRUE(near(page.raster->image.pixelColor(35, 5), Qt::green)) << name;
        EXPECT_TRUE(near(page.raster->image.pixelColor(5, 55), Qt::blue)) << name;
        EXPECT_TRUE(near(page.raster->image.pixelColor(35, 55), Qt::yellow)) << name;
    }
}

TEST_F(PageLoaderTest, TheFilesOrientationIsReportedAndNotApplied) {
    writeJpeg(folder_.file("a.jpg"), quarters(40, 60), ExifValues{6, 0, 0, false});
    const LoadedPage page = loadPage(folder_.file("a.jpg"), 0);
    EXPECT_EQ(page.properties.orientation, 6);
    EXPECT_EQ(page.raster->image.size(), QSize(40, 60));
    EXPECT_TRUE(near(page.raster->image.pixelColor(5, 5), Qt::red));
}

TEST_F(PageLoaderTest, TakesThePageOfATiffFileWithItsProperties) {
    writeTiff(folder_.file("a.tif"), {{quarters(8, 8)}, {quarters(20, 10), 3, 200, 100, 2}});
    const LoadedPage page = loadPage(folder_.file("a.tif"), 1);
    ASSERT_EQ(page.error, PageLoadError::none);
    EXPECT_EQ(page.raster->pixels, (PixelSize{20, 10}));
    EXPECT_EQ(page.properties.orientation, 3);
    EXPECT_EQ(page.properties.dpiWidth, 200.0);
    EXPECT_TRUE(near(page.raster->image.pixelColor(1, 1), Qt::red));
    EXPECT_EQ(loadPage(folder_.file("a.tif"), 2).error, PageLoadError::noSuchPage);
}

TEST_F(PageLoaderTest, APdfPageCountsItsBoxAndIsDrawnFiner) {
    writePdf(folder_.file("a.pdf"), {{595, 842, "1 0 0"}, {841.89, 595.28, "0 0 1"}});
    const LoadedPage page = loadPage(folder_.file("a.pdf"), 1);
    ASSERT_EQ(page.error, PageLoadError::none);
    EXPECT_EQ(page.raster->pixels, (PixelSize{842, 595}));
    EXPECT_EQ(page.raster->image.width(), 2200);
    EXPECT_TRUE(near(page.raster->image.pixelColor(1000, 700), Qt::blue));
    EXPECT_FALSE(page.properties.dpiWidth);
    EXPECT_FALSE(page.properties.orientation);
    EXPECT_EQ(loadPage(folder_.file("a.pdf"), 2).error, PageLoadError::noSuchPage);
}

TEST_F(PageLoaderTest, AnEmptyPdfPageIsWhite) {
    writePdf(folder_.file("a.pdf"), {{100, 100, "q Q 1 1 1"}});
    const LoadedPage page = loadPage(folder_.file("a.pdf"), 0);
    ASSERT_EQ(page.error, PageLoadError::none);
    EXPECT_EQ(page.raster->image.pixelColor(500, 500), QColor(Qt::white));
}

TEST_F(PageLoaderTest, SaysWhyThereIsNoPage) {
    writeText(folder_.file("text.jpg"), "This is not a picture.");
    writeText(folder_.file("text.pdf"), "This is not a document.");
    EXPECT_EQ(loadPage(folder_.file("none.jpg"), 0).error, PageLoadError::cannotOpen);
    EXPECT_EQ(loadPage(folder_.file("none.pdf"), 0).error, PageLoadError::cannotOpen);
    EXPECT_EQ(loadPage(folder_.file("text.jpg"), 0).error, PageLoadError::notAPicture);
    EXPECT_EQ(loadPage(folder_.file("text.pdf"), 0).error, PageLoadError::notAPicture);
    EXPECT_EQ(loadPage(folder_.path(), 0).error, PageLoadError::notAPicture);
}

TEST_F(PageLoaderTest, APictureWhosePathSaysPdfIsThePictureItIs) {
    const std::string folder = folder_.file("my-pdfs");
    ASSERT_TRUE(std::filesystem::create_directory(folder));
    const std::string jpeg = folder + "/a.jpg", tiff = folder + "/b.tif";
    writeJpeg(jpeg, quarters(40, 60), ExifValues{6, 0, 0, false});
    writeTiff(tiff, {{quarters(90, 10)}, {quarters(20, 70)}});
    const LoadedPage page = loadPage(jpeg, 0);
    ASSERT_EQ(page.error, PageLoadError::none);
    EXPECT_EQ(page.raster->pixels, (PixelSize{40, 60}));
    EXPECT_EQ(page.properties.orientation, 6);
    EXPECT_EQ(pagePixelSize(jpeg, 0), (PixelSize{40, 60}));
    EXPECT_EQ(PagePreviews(jpeg).pageCount(), 1);
    EXPECT_EQ(PagePreviews(jpeg).load(0, 60).error, PageLoadError::none);
    EXPECT_EQ(PagePreviews(tiff).pageCount(), 2);
    EXPECT_EQ(pagePixelSize(tiff, 1), (PixelSize{20, 70}));
    EXPECT_EQ(largestOf(tiff), (PixelSize{90, 70}));
}

TEST_F(PageLoaderTest, ADocumentWhosePathSaysPdfIsReadAsPdfWhateverItsName) {
    const std::string folder = folder_.file("my-pdfs");
    ASSERT_TRUE(std::filesystem::create_directory(folder));
    const std::string path = folder + "/a.tif";
    writePdf(path, {{100, 200, "1 0 0"}, {300, 50, "0 0 1"}});
    EXPECT_EQ(PagePreviews(path).pageCount(), 2);
    EXPECT_EQ(loadPage(path, 1).raster->pixels, (PixelSize{300, 50}));
    EXPECT_EQ(pagePixelSize(path, 1), (PixelSize{300, 50}));
    writeText(path, "no document");
    EXPECT_EQ(PagePreviews(path).pageCount(), 0);
}

TEST_F(PageLoaderTest, RefusesMorePixelsThanThereIsRoomFor) {
    // A BMP header of 100,000 x 100,000 pixels.
    ASSERT_TRUE(quarters(4, 4).save(QString::fromStdString(folder_.file("a.bmp"))));
    Bytes bytes = readBytes(folder_.file("a.bmp"));
    for (const size_t at : {size_t{18}, size_t{22}}) {
        bytes[at] = 0xA0;
        bytes[at + 1] = 0x86;
        bytes[at + 2] = 0x01;
        bytes[at + 3] = 0;
    }
    writeBytes(folder_.file("a.bmp"), bytes);
    const LoadedPage page = loadPage(folder_.file("a.bmp"), 0);
    EXPECT_EQ(page.error, PageLoadError::tooManyPixels);
    EXPECT_STREQ(describe(page.error), "the page has too many pixels");
    EXPECT_EQ(pagePixelSize(folder_.file("a.bmp"), 0), (PixelSize{100000, 100000}));
}

TEST_F(PageLoaderTest, CutFilesGiveAPageOrAReason) {
    const QImage picture = quarters(64, 64);
    writeJpeg(folder_.file("a.jpg"), picture);
    writeTiff(folder_.file("a.tif"), {{picture}});
    writePdf(folder_.file("a.pdf"), {{100, 100, "1 0 0"}});
    ASSERT_TRUE(picture.save(QString::fromStdString(folder_.file("a.png"))));
    ASSERT_TRUE(picture.save(QString::fromStdString(folder_.file("a.bmp"))));
    for (const char* name : {"a.jpg", "a.tif", "a.pdf", "a.png", "a.bmp"}) {
        const Bytes whole = readBytes(folder_.file(name));
        for (size_t parts = 0; parts < 24; ++parts) {
            const size_t length = whole.size() * parts / 24;
            writeBytes(folder_.file(name), std::span(whole).first(length));
            const LoadedPage page = loadPage(folder_.file(name), 0);
            EXPECT_EQ(page.error == PageLoadError::none, page.raster != nullptr);
            EXPECT_LE(PagePreviews(folder_.file(name)).pageCount(), 1);
        }
    }
}

TEST_F(PageLoaderTest, PreviewsOfJpegPagesAreDecodedAtAFractionOfTheirSize) {
    writeJpeg(folder_.file("a.jpg"), quarters(1600, 2400));
    const LoadedPage page = PagePreviews(folder_.file("a.jpg")).load(0, 600);
    ASSERT_EQ(page.error, PageLoadError::none);
    EXPECT_EQ(page.raster->image.size(), QSize(400, 600));
    EXPECT_EQ(page.raster->pixels, (PixelSize{1600, 2400}));
    EXPECT_TRUE(near(page.raster->image.pixelColor(20, 20), Qt::red));
}

TEST_F(PageLoaderTest, PreviewsOfOtherPagesAreTwiceAsFineAsAskedAtTheMost) {
    ASSERT_TRUE(quarters(800, 1200).save(QString::fromStdString(folder_.file("a.png"))));
    const LoadedPage page = PagePreviews(folder_.file("a.png")).load(0, 300);
    ASSERT_EQ(page.error, PageLoadError::none);
    EXPECT_EQ(page.raster->image.size(), QSize(400, 600));
    EXPECT_EQ(page.raster->pixels, (PixelSize{800, 1200}));
}

TEST_F(PageLoaderTest, ThumbnailsTakeNoMoreBytesAPixelThanTheirColoursNeed) {
    const QImage coloured = quarters(300, 200);
    writeJpeg(folder_.file("a.jpg"), coloured);
    writeJpeg(folder_.file("b.jpg"), coloured.convertToFormat(QImage::Format_Grayscale8));
    EXPECT_EQ(readThumbnail(folder_.file("a.jpg"), 150).depth(), 24);
    EXPECT_EQ(readThumbnail(folder_.file("b.jpg"), 150).depth(), 8);
    EXPECT_EQ(readThumbnail(folder_.file("a.jpg"), 150).size(), QSize(150, 100));
    EXPECT_TRUE(readThumbnail(folder_.file("none.jpg"), 150).isNull());
}

TEST_F(PageLoaderTest, ThePathDecidesHowManyPagesAreListed) {
    writeTiff(folder_.file("three.tif"), {{quarters(8, 8)}, {quarters(8, 8)}, {quarters(8, 8)}});
    std::filesystem::copy(folder_.file("three.tif"), folder_.file("three.bmp"));
    writePdf(folder_.file("two.pdf"), {{}, {}});
    EXPECT_EQ(PagePreviews(folder_.file("three.tif")).pageCount(), 3);
    EXPECT_EQ(PagePreviews(folder_.file("three.bmp")).pageCount(), 1);
    EXPECT_EQ(PagePreviews(folder_.file("two.pdf")).pageCount(), 2);
    EXPECT_EQ(PagePreviews(folder_.file("none.tif")).pageCount(), 0);
}

TEST_F(PageLoaderTest, PageSizesFollowTheFileOnDisk) {
    const std::string path = folder_.file("a.pdf");
    writePdf(path, {{100, 200, "1 0 0"}});
    EXPECT_EQ(pagePixelSize(path, 0), (PixelSize{100, 200}));
    EXPECT_EQ(pagePixelSize(path, 1), PixelSize{});
    writePdf(path, {{300, 150, "1 0 0"}, {50, 400, "1 0 0"}});
    EXPECT_EQ(pagePixelSize(path, 0), (PixelSize{300, 150}));
    EXPECT_EQ(largestOf(path), (PixelSize{300, 400}));
    std::filesystem::remove(path);
    EXPECT_EQ(pagePixelSize(path, 0), PixelSize{});

    const std::string picture = folder_.file("a.png");
    ASSERT_TRUE(quarters(10, 20).save(QString::fromStdString(picture)));
    EXPECT_EQ(pagePixelSize(picture, 0), (PixelSize{10, 20}));
    EXPECT_EQ(pagePixelSize(picture, 1), PixelSize{});
    ASSERT_TRUE(quarters(30, 5).save(QString::fromStdString(picture)));
    EXPECT_EQ(pagePixelSize(picture, 0), (PixelSize{30, 5}));
}

TEST_F(PageLoaderTest, TheLargestWidthAndHeightMayBeOfDifferentPages) {
    writeTiff(folder_.file("a.tif"), {{quarters(90, 10)}, {quarters(20, 70)}});
    EXPECT_EQ(largestOf(folder_.file("a.tif")), (PixelSize{90, 70}));
    EXPECT_EQ(largestOf(folder_.file("none.tif")), PixelSize{});
}

TEST_F(PageLoaderTest, ThePagesOfAPdfFileAreMeasuredBitByBit) {
    const std::string path = folder_.file("a.pdf");
    writePdf(path, {{100, 200, "1 0 0"}, {300, 150, "1 0 0"}, {50, 400, "1 0 0"}});
    const std::chrono::milliseconds noTime{0};
    const LargestPageSize first = largestPagePixelSize(path, noTime);
    EXPECT_EQ(first.size, (PixelSize{100, 200}));
    EXPECT_FALSE(first.complete);
    EXPECT_EQ(largestPagePixelSize(path, noTime).size, (PixelSize{300, 200}));
    const LargestPageSize last = largestPagePixelSize(path, noTime);
    EXPECT_EQ(last.size, (PixelSize{300, 400}));
    EXPECT_TRUE(last.complete);
    // Another file under the name is measured from its beginning.
    writePdf(path, {{30, 20, "1 0 0"}, {40, 10, "1 0 0"}});
    EXPECT_EQ(largestPagePixelSize(path, noTime).size, (PixelSize{30, 20}));
    EXPECT_EQ(largestOf(path), (PixelSize{40, 20}));
    EXPECT_TRUE(largestPagePixelSize(folder_.file("none.pdf"), noTime).complete);
}

TEST_F(PageLoaderTest, APipeIsNoPageAndDoesNotBlock) {
    const std::string pipe = folder_.file("a.pdf");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(loadPage(pipe, 0).error, PageLoadError::notAPicture);
    EXPECT_EQ(pagePixelSize(pipe, 0), PixelSize{});
    const std::string picture = folder_.file("a.jpg");
    ASSERT_EQ(mkfifo(picture.c_str(), 0600), 0);
    EXPECT_EQ(loadPage(picture, 0).error, PageLoadError::notAPicture);
    EXPECT_EQ(pagePixelSize(picture, 0), PixelSize{});
}

TEST(PixelConversion, KeepsOneBitGreyAndColourPages) {
    const auto page = BitmapImageRep::make({.pixelsWide = 10,
                                            .pixelsHigh = 2,
                                            .bitsPerSample = 1,
                                            .samplesPerPixel = 1,
                                            .bitsPerPixel = 1,
                                            .bytesPerRow = 2});
    ASSERT_TRUE(page);
    page->bitmapData()[0] = 0x80; // first pixel of the first row is white
    page->bitmapData()[3] = 0x40; // last pixel of the second row is white
    const QImage image = qtImage(*page);
    EXPECT_EQ(image.format(), QImage::Format_Grayscale8);
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(1, 0), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(9, 1), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(8, 1), QColor(Qt::black));
}

TEST(PixelConversion, MakesAnImageObjectOfThePixels) {
    const Image colour = imageObject(quarters(3, 2));
    ASSERT_TRUE(colour.isValid());
    const BitmapImageRep& page = *colour.representations().front();
    EXPECT_EQ(page.bitsPerPixel(), 24);
    EXPECT_EQ(page.bytesPerRow(), 9);
    EXPECT_EQ(page.row(0)[0], 255);
    EXPECT_EQ(page.row(0)[1], 0);
    EXPECT_EQ(page.row(0)[3], 0);
    EXPECT_EQ(page.row(0)[4], 255);
    EXPECT_EQ(colour.size(), (Size{3, 2}));
    EXPECT_FALSE(imageObject(QImage()).isValid());
    EXPECT_EQ(imageObject(quarters(3, 2).convertToFormat(QImage::Format_Grayscale8))
                  .representations()
                  .front()
                  ->bitsPerPixel(),
              8);
}

TEST(PixelConversion, TransparencyBecomesWhite) {
    QImage image(2, 1, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    image.setPixelColor(1, 0, Qt::red);
    EXPECT_EQ(opaqueImage(image).pixelColor(0, 0), QColor(Qt::white));
    EXPECT_EQ(opaqueImage(image).pixelColor(1, 0), QColor(Qt::red));
}

} // namespace
} // namespace paperline
