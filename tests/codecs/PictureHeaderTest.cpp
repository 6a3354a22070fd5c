#include "codecs/pictures/PictureHeader.h"

#include "ViewerTestFiles.h"
#include "codecs/pictures/PictureFormat.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace paperline {
namespace {

class PictureHeaderTest : public ::testing::Test {
protected:
    std::string write(const Bytes& bytes) {
        writeBytes(path_, bytes);
        return path_;
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.file("page");
};

// 14 bytes of file header, 40 of the picture's: 5 x 7 pixels at 11811 x 5906 dots per metre.
Bytes bmpHeader() {
    return {'B', 'M', 0,    0,    0, 0, 0,    0,    0, 0, 54, 0, 0, 0, 40, 0, 0, 0,
            5,   0,   0,    0,    7, 0, 0,    0,    1, 0, 24, 0, 0, 0, 0,  0, 0, 0,
            0,   0,   0x23, 0x2E, 0, 0, 0x12, 0x17, 0, 0, 0,  0, 0, 0, 0,  0, 0, 0};
}

TEST_F(PictureHeaderTest, ReadsABmpFile) {
    const auto header = readPictureHeader(write(bmpHeader()), 0);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->size, (PixelSize{5, 7}));
    EXPECT_NEAR(header->properties.dpiWidth.value(), 300, 0.01);
    EXPECT_NEAR(header->properties.dpiHeight.value(), 150, 0.02);
    EXPECT_FALSE(header->properties.orientation);
    EXPECT_EQ(pictureFormat(path_), PictureFormat::bmp);
}

TEST_F(PictureHeaderTest, ReadsABmpFileWithRowsFromTheTop) {
    Bytes bytes = bmpHeader();
    bytes[22] = 0xF9; // -7
    bytes[23] = bytes[24] = bytes[25] = 0xFF;
    EXPECT_EQ(readPictureHeader(write(bytes), 0)->size, (PixelSize{5, 7}));
}

TEST_F(PictureHeaderTest, ReadsTheOldBmpHeader) {
    const Bytes bytes{'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 26, 0,  0,
                      0,   12,  0, 0, 0, 3, 1, 4, 0, 1, 0,  24, 0};
    EXPECT_EQ(readPictureHeader(write(bytes), 0)->size, (PixelSize{259, 4}));
}

TEST_F(PictureHeaderTest, ReadsAGifFile) {
    const Bytes bytes{'G', 'I', 'F', '8', '9', 'a', 0x2C, 0x01, 0x0A, 0x00, 0, 0, 0};
    EXPECT_EQ(readPictureHeader(write(bytes), 0)->size, (PixelSize{300, 10}));
}

Bytes pngHeader() {
    return {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A, 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0,
            0,    0,   200, 0,   0,    1,    0x2C, 8,    2, 0, 0, 0,  1,   2,   3,   4};
}

TEST_F(PictureHeaderTest, ReadsAPngFileWithItsResolution) {
    Bytes bytes = pngHeader();
    const Bytes physical{0,    0, 0, 9,    'p',  'H', 'Y', 's', 0, 0, 0x2E,
                         0x23, 0, 0, 0x17, 0x12, 1,   9,   9,   9, 9};
    bytes.insert(bytes.end(), physical.begin(), physical.end());
    const auto header = readPictureHeader(write(bytes), 0);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->size, (PixelSize{200, 300}));
    EXPECT_NEAR(header->properties.dpiWidth.value(), 300, 0.01);
    EXPECT_NEAR(header->properties.dpiHeight.value(), 150, 0.02);
}

TEST_F(PictureHeaderTest, APngFileWithoutPhysicalUnitHasNoResolution) {
    Bytes bytes = pngHeader();
    const Bytes ratio{0, 0, 0, 9, 'p', 'H', 'Y', 's', 0, 0, 0, 2, 0, 0, 0, 1, 0, 9, 9, 9, 9};
    bytes.insert(bytes.end(), ratio.begin(), ratio.end());
    EXPECT_FALSE(readPictureHeader(write(bytes), 0)->properties.dpiWidth);
}

Bytes jpegStart() {
    return {0xFF, 0xD8};
}

Bytes jfif(uint8_t unit) {
    return {0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1, 2, unit, 0, 200, 0, 100, 0, 0};
}

Bytes startOfFrame(uint8_t marker = 0xC0) {
    return {0xFF, marker, 0, 11, 8, 1, 0x2C, 0, 200, 1, 1, 0x11, 0};
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST_F(PictureHeaderTest, ReadsAJpegFileWithItsDensity) {
    const auto header = readPictureHeader(write(joined({jpegStart(), jfif(1), startOfFrame()})), 0);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->size, (PixelSize{200, 300}));
    EXPECT_EQ(header->properties.dpiWidth, 200.0);
    EXPECT_EQ(header->properties.dpiHeight, 100.0);
}

TEST_F(PictureHeaderTest, JpegDensityMayBePerCentimetreOrABareRatio) {
    const auto metric = readPictureHeader(write(joined({jpegStart(), jfif(2), startOfFrame()})), 0);
    EXPECT_DOUBLE_EQ(metric->properties.dpiWidth.value(), 508);
    const auto ratio = readPictureHeader(write(joined({jpegStart(), jfif(0), startOfFrame()})), 0);
    EXPECT_FALSE(ratio->properties.dpiWidth);
}

TEST_F(PictureHeaderTest, FindsProgressiveFramesAndSkipsFillBytesAndTables) {
    const Bytes tables{0xFF, 0xFF, 0xFF, 0xC4, 0, 3, 0};
    EXPECT_EQ(readPictureHeader(write(joined({jpegStart(), tables, startOfFrame(0xC2)})), 0)->size,
              (PixelSize{200, 300}));
}

TEST_F(PictureHeaderTest, ReadsExifInBothByteOrders) {
    for (const bool big : {false, true}) {
        const Bytes exif = exifSegment({6, 240, 120, big});
        const auto header =
            readPictureHeader(write(joined({jpegStart(), exif, startOfFrame()})), 0);
        ASSERT_TRUE(header);
        EXPECT_EQ(header->properties.orientation, 6);
        EXPECT_EQ(header->properties.dpiWidth, 240.0);
        EXPECT_EQ(header->properties.dpiHeight, 120.0);
    }
}

TEST_F(PictureHeaderTest, TheJfifDensityComesBeforeExifs) {
    const Bytes exif = exifSegment({3, 240, 120, false});
    const auto header =
        readPictureHeader(write(joined({jpegStart(), jfif(1), exif, startOfFrame()})), 0);
    EXPECT_EQ(header->properties.dpiWidth, 200.0);
    EXPECT_EQ(header->properties.orientation, 3);
}

TEST_F(PictureHeaderTest, ReadsEveryPageOfATiffFile) {
    writeTiff(path_,
              {{quarters(20, 30), 1, 300, 300, 2},
               {quarters(40, 10), 8, 200, 100, 2},
               {quarters(5, 6), 1, 118, 59, 3}});
    EXPECT_EQ(readPictureSizes(path_), (std::vector<PixelSize>{{20, 30}, {40, 10}, {5, 6}}));
    const auto second = readPictureHeader(path_, 1);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->size, (PixelSize{40, 10}));
    EXPECT_EQ(second->properties.orientation, 8);
    EXPECT_EQ(second->properties.dpiWidth, 200.0);
    EXPECT_EQ(second->properties.dpiHeight, 100.0);
    EXPECT_NEAR(readPictureHeader(path_, 2)->properties.dpiWidth.value(), 299.72, 0.01);
    EXPECT_FALSE(readPictureHeader(path_, 3));
    EXPECT_FALSE(readPictureHeader(path_, -1));
}

TEST_F(PictureHeaderTest, ATiffResolutionWithoutUnitIsNone) {
    writeTiff(path_, {{quarters(20, 30), 1, 300, 150, 1}});
    EXPECT_FALSE(readPictureHeader(path_, 0)->properties.dpiWidth);
}

TEST_F(PictureHeaderTest, ADirectoryThatLeadsBackToItselfEndsTheList) {
    const Bytes bytes{'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 0, 1, 3,
                      0,   1,   0,  0, 0, 9, 0, 0, 0, 8, 0, 0, 0};
    EXPECT_EQ(readPictureSizes(write(bytes)).size(), 1U);
    EXPECT_FALSE(readPictureHeader(path_, 1));
}

TEST_F(PictureHeaderTest, OnlyTiffFilesHaveSecondPages) {
    EXPECT_TRUE(readPictureHeader(write(bmpHeader()), 0));
    EXPECT_FALSE(readPictureHeader(path_, 1));
    EXPECT_EQ(readPictureSizes(path_).size(), 1U);
}

TEST_F(PictureHeaderTest, TakesHugeSizesAsTheyStand) {
    Bytes bytes = pngHeader();
    bytes[17] = bytes[21] = 0x01; // 100,000 and more
    bytes[18] = bytes[22] = 0x86;
    bytes[19] = bytes[23] = 0xA0;
    EXPECT_EQ(readPictureHeader(write(bytes), 0)->size, (PixelSize{100000, 100000}));
}

TEST_F(PictureHeaderTest, NothingComesOfWhatIsNoPicture) {
    EXPECT_FALSE(readPictureHeader(folder_.file("missing"), 0));
    EXPECT_FALSE(readPictureHeader(folder_.path(), 0));
    EXPECT_FALSE(readPictureHeader(write({}), 0));
    writeText(path_, "Not a picture, whatever its name says.");
    EXPECT_FALSE(readPictureHeader(path_, 0));
    EXPECT_TRUE(readPictureSizes(path_).empty());
    EXPECT_EQ(pictureFormat(path_), PictureFormat::none);
}

// Every prefix of every kind of file, and every byte changed: an answer or none, never an access
// outside the file or a walk without end.
TEST_F(PictureHeaderTest, SurvivesCutAndChangedFiles) {
    writeTiff(path_, {{quarters(3, 2)}, {quarters(2, 2)}});
    const std::vector<Bytes> files{
        bmpHeader(),
        pngHeader(),
        joined({jpegStart(), jfif(1), exifSegment({6, 240, 120, false}), startOfFrame()}),
        readBytes(path_)};
    for (const Bytes& file : files) {
        for (size_t length = 0; length < file.size(); ++length) {
            write(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(length)));
            EXPECT_LE(readPictureSizes(path_).size(), 2U);
        }
        for (size_t at = 0; at < file.size(); ++at) {
            Bytes changed = file;
            changed[at] = static_cast<uint8_t>(changed[at] ^ 0xFFU);
            write(changed);
            EXPECT_LE(readPictureSizes(path_).size(), 2U);
        }
    }
}

} // namespace
} // namespace paperline
