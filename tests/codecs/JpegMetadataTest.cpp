#include "codecs/jpeg/JpegMetadata.h"

#include "PagePictures.h"
#include "codecs/jpeg/ExifSegment.h"
#include "codecs/jpeg/JpegCodec.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/FileTesting.h"

#include <gtest/gtest.h>
#include <map>

namespace paperline {
namespace {

using namespace testing_support;
using Bytes = std::vector<uint8_t>;

constexpr size_t jfifEnd = 20; // the start of the image and APP0

Bytes jpegOf(const BitmapImageRep& page, uint16_t horizontalDpi = 300, uint16_t verticalDpi = 300) {
    return encodeJpeg(page, {75, horizontalDpi, verticalDpi}).value_or(Bytes());
}

Bytes patched(const Bytes& jpeg, const std::string& make, const std::string& model) {
    return jpegWithMakeAndModel(jpeg, make, model).value_or(Bytes());
}

Bytes part(const Bytes& bytes, size_t at, size_t count) {
    return at + count > bytes.size() ? Bytes()
                                     : Bytes(bytes.begin() + static_cast<ptrdiff_t>(at),
                                             bytes.begin() + static_cast<ptrdiff_t>(at + count));
}

Bytes segment(uint8_t marker, const Bytes& content) {
    const size_t length = content.size() + 2;
    Bytes bytes{0xFF, marker, static_cast<uint8_t>(length >> 8U), static_cast<uint8_t>(length)};
    bytes.insert(bytes.end(), content.begin(), content.end());
    return bytes;
}

Bytes withSegment(Bytes jpeg, size_t at, const Bytes& added) {
    jpeg.insert(jpeg.begin() + static_cast<ptrdiff_t>(at), added.begin(), added.end());
    return jpeg;
}

// The length of the segment that stands there, marker included.
size_t segmentSize(const Bytes& jpeg, size_t at) {
    return 2 + (size_t{jpeg.at(at + 2)} << 8U) + jpeg.at(at + 3);
}

uint32_t littleEndian(const Bytes& bytes, size_t at, size_t count) {
    uint32_t number = 0;
    for (size_t index = count; index > 0; --index)
        number = number << 8U | bytes.at(at + index - 1);
    return number;
}

using Tags = std::map<uint32_t, Bytes>;

// The values' bytes of every tag of a directory in little-endian EXIF data.
Tags tagsAt(const Bytes& tiff, size_t at) {
    const std::map<uint32_t, size_t> sizes{{1, 1}, {2, 1}, {3, 2}, {4, 4}, {5, 8}, {7, 1}};
    Tags tags;
    const uint32_t count = littleEndian(tiff, at, 2);
    for (size_t entry = at + 2; entry < at + 2 + 12 * size_t{count}; entry += 12) {
        const size_t size =
            sizes.at(littleEndian(tiff, entry + 2, 2)) * littleEndian(tiff, entry + 4, 4);
        const size_t values = size > 4 ? littleEndian(tiff, entry + 8, 4) : entry + 8;
        tags[littleEndian(tiff, entry, 2)] = part(tiff, values, size);
    }
    return tags;
}

// The TIFF data of the EXIF segment behind the JFIF one.
Bytes exifOf(const Bytes& jpeg) {
    EXPECT_EQ(part(jpeg, jfifEnd, 2), (Bytes{0xFF, 0xE1}));
    EXPECT_EQ(part(jpeg, jfifEnd + 4, 6), (Bytes{'E', 'x', 'i', 'f', 0, 0}));
    return part(jpeg, jfifEnd + 10, segmentSize(jpeg, jfifEnd) - 10);
}

Tags mainTags(const Bytes& jpeg) {
    const Bytes tiff = exifOf(jpeg);
    EXPECT_EQ(part(tiff, 0, 8), (Bytes{'I', 'I', 42, 0, 8, 0, 0, 0}));
    return tagsAt(tiff, 8);
}

Tags detailTags(const Bytes& jpeg) {
    Tags main = mainTags(jpeg);
    return tagsAt(exifOf(jpeg), littleEndian(main[0x8769], 0, 4));
}

Bytes zeroEnded(std::string_view text) {
    Bytes bytes(text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

// EXIF data of another program: one text of its own, an orientation, a comment among the details.
Bytes foreignExif() {
    return {'E',  'x',  'i', 'f', 0, 0,                         //
            'I',  'I',  42,  0,   8, 0, 0, 0,                   //
            4,    0,                                            // main directory
            0x0F, 0x01, 2,   0,   4, 0, 0, 0, 'O', 'l', 'd', 0, // maker
            0x12, 0x01, 3,   0,   1, 0, 0, 0, 6,   0,   0,   0, // orientation
            0x31, 0x01, 2,   0,   4, 0, 0, 0, 'P', 'r', 'g', 0, // software
            0x69, 0x87, 4,   0,   1, 0, 0, 0, 62,  0,   0,   0, // details
            0,    0,    0,   0,                                 //
            1,    0,                                            // details
            0x90, 0x92, 2,   0,   4, 0, 0, 0, '1', '2', '3', 0, // part of a second
            0,    0,    0,   0};
}

TEST(JpegMetadata, APartBehindTheJfifSegmentIsAllThatChanges) {
    const Bytes before = jpegOf(*noisePage(61, 43, 24));
    const Bytes after = patched(before, "Alpha ", "3000 Duplex");
    ASSERT_GT(after.size(), before.size());
    const size_t added = after.size() - before.size();
    EXPECT_EQ(part(after, 0, jfifEnd), part(before, 0, jfifEnd));
    EXPECT_EQ(segmentSize(after, jfifEnd), added);
    EXPECT_EQ(part(after, jfifEnd + added, before.size() - jfifEnd),
              part(before, jfifEnd, before.size() - jfifEnd));
}

TEST(JpegMetadata, TellsMakerModelAndResolution) {
    const Bytes jpeg = patched(jpegOf(*noisePage(8, 5, 8), 200, 400), "Alpha ", "3000 Duplex");
    Tags tags = mainTags(jpeg);
    EXPECT_EQ(tags[0x010F], zeroEnded("Alpha "));
    EXPECT_EQ(tags[0x0110], zeroEnded("3000 Duplex"));
    EXPECT_EQ(tags[0x011A], (Bytes{200, 0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(tags[0x011B], (Bytes{0x90, 1, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(tags[0x0128], (Bytes{2, 0})); // dots per inch
    Tags details = detailTags(jpeg);
    EXPECT_EQ(details[0xA002], (Bytes{8, 0, 0, 0}));
    EXPECT_EQ(details[0xA003], (Bytes{5, 0, 0, 0}));
    EXPECT_EQ(details[0x9101], (Bytes{1, 0, 0, 0})); // light only
}

TEST(JpegMetadata, DetailsOfTheFileBeforeGo) {
    const Bytes plain = jpegOf(*noisePage(8, 8, 24));
    const Bytes jpeg =
        patched(withSegment(plain, jfifEnd, segment(0xE1, foreignExif())), "Alpha ", "3000");
    Tags tags = mainTags(jpeg);
    EXPECT_EQ(tags[0x010F], zeroEnded("Alpha "));
    EXPECT_EQ(tags[0x0112], (Bytes{6, 0})); // how the picture lies
    EXPECT_EQ(tags.count(0x0131), 0U);
    EXPECT_EQ(detailTags(jpeg).count(0x9290), 0U);
    const size_t end = jfifEnd + segmentSize(jpeg, jfifEnd);
    EXPECT_EQ(part(jpeg, end, jpeg.size() - end), part(plain, jfifEnd, plain.size() - jfifEnd));
}

TEST(JpegMetadata, APatchOfAPatchIsThatOfThePlainFile) {
    const Bytes plain = jpegOf(*noisePage(8, 8, 24));
    EXPECT_EQ(patched(patched(plain, "A much longer maker ", "and model"), "B ", "C"),
              patched(plain, "B ", "C"));
}

TEST(JpegMetadata, OtherSegmentsStay) {
    const Bytes comment = segment(0xFE, {'h', 'e', 'l', 'l', 'o'});
    const Bytes otherApp1 = segment(0xE1, {'h', 't', 't', 'p', ':', '/', '/', 'n', 's', 0});
    const Bytes plain = jpegOf(*noisePage(8, 8, 24));
    const Bytes rich = withSegment(withSegment(plain, jfifEnd, otherApp1), jfifEnd, comment);
    const Bytes jpeg = patched(rich, "A ", "B");
    const size_t end = jfifEnd + segmentSize(jpeg, jfifEnd);
    EXPECT_EQ(part(jpeg, end, jpeg.size() - end), part(rich, jfifEnd, rich.size() - jfifEnd));
}

TEST(JpegMetadata, WithoutAJfifSegmentItStandsFirst) {
    const Bytes whole = jpegOf(*noisePage(8, 8, 8));
    Bytes bare{0xFF, 0xD8};
    bare.insert(bare.end(), whole.begin() + jfifEnd, whole.end());
    const Bytes jpeg = patched(bare, "A ", "B");
    EXPECT_EQ(part(jpeg, 0, 4), (Bytes{0xFF, 0xD8, 0xFF, 0xE1}));
    const size_t end = 2 + segmentSize(jpeg, 2);
    EXPECT_EQ(part(jpeg, end, jpeg.size() - end), part(bare, 2, bare.size() - 2));
}

TEST(JpegMetadata, ThePictureIsNotCodedAnew) {
    const Bytes before = jpegOf(*noisePage(50, 50, 24));
    const auto picture = decodeJpeg(before);
    const auto same = decodeJpeg(patched(before, "A ", "B"));
    ASSERT_TRUE(picture && same);
    expectSamePixels(*picture->image, *same->image);
    EXPECT_EQ(same->horizontalDpi, 300);
}

TEST(JpegMetadata, AFractionOfADotIsKept) {
    const auto content = exifSegment({.make = "A ",
                                      .model = "B",
                                      .widthPixels = 1,
                                      .heightPixels = 1,
                                      .components = 3,
                                      .horizontalDpi = 299.72,
                                      .verticalDpi = 299.72},
                                     {});
    ASSERT_TRUE(content.has_value());
    Tags tags = tagsAt(part(*content, 6, content->size() - 6), 8);
    EXPECT_EQ(tags[0x011A], (Bytes{0x14, 0x75, 0, 0, 100, 0, 0, 0})); // 29972/100
}

TEST(JpegMetadata, TextsThatDoNotFitASegmentAreRefused) {
    const Bytes jpeg = jpegOf(*noisePage(8, 8, 8));
    EXPECT_FALSE(jpegWithMakeAndModel(jpeg, "A ", std::string(65536, 'm')).has_value());
    EXPECT_FALSE(jpegWithMakeAndModel(jpeg, std::string(40000, 'm'), std::string(40000, 'm')));
    EXPECT_TRUE(jpegWithMakeAndModel(jpeg, "A ", std::string(60000, 'm')).has_value());
}

TEST(JpegMetadata, DamagedOlderDataDoesNoHarm) {
    const Bytes plain = jpegOf(*noisePage(8, 8, 24));
    for (size_t at = 6; at < foreignExif().size(); ++at) {
        Bytes exif = foreignExif();
        exif[at] = 0xFF;
        const Bytes jpeg = patched(withSegment(plain, jfifEnd, segment(0xE1, exif)), "A ", "B");
        ASSERT_FALSE(jpeg.empty()) << at;
        const size_t end = jfifEnd + segmentSize(jpeg, jfifEnd);
        EXPECT_EQ(part(jpeg, end, jpeg.size() - end), part(plain, jfifEnd, plain.size() - jfifEnd));
    }
}

TEST(JpegMetadata, WhatIsNoWholeHeaderIsRefused) {
    const Bytes jpeg = jpegOf(*noisePage(8, 8, 8));
    for (size_t size = 0; size < jpeg.size(); ++size) {
        const auto result = jpegWithMakeAndModel(part(jpeg, 0, size), "A ", "B");
        if (result)
            EXPECT_EQ(part(*result, result->size() - 1, 1), part(jpeg, size - 1, 1)) << size;
        else
            EXPECT_LT(size, jpeg.size() - 3) << size;
    }
    EXPECT_FALSE(jpegWithMakeAndModel(Bytes{'I', 'I', 42, 0}, "A ", "B").has_value());
}

TEST(JpegMetadata, AFileIsChangedWholeOrNotAtAll) {
    const TestFolder folder;
    const Bytes jpeg = jpegOf(*noisePage(30, 30, 24));
    ASSERT_TRUE(writeFile(folder / "page.jpg", jpeg));
    ASSERT_EQ(::chmod((folder / "page.jpg").c_str(), 0640), 0);
    EXPECT_TRUE(setJpegMakeAndModel(folder / "page.jpg", "Alpha ", "3000"));
    EXPECT_EQ(readFile(folder / "page.jpg"), patched(jpeg, "Alpha ", "3000"));
    struct stat status = {};
    ASSERT_EQ(::stat((folder / "page.jpg").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);

    ASSERT_TRUE(put(folder / "page.jpg", "no picture"));
    EXPECT_FALSE(setJpegMakeAndModel(folder / "page.jpg", "A ", "B"));
    EXPECT_EQ(textOf(folder / "page.jpg"), "no picture");
    EXPECT_FALSE(setJpegMakeAndModel(folder / "gone", "A ", "B"));
    EXPECT_EQ(folderEntries(folder.path()), std::vector<std::string>{"page.jpg"});
}

TEST(JpegMetadata, AFullDiskLeavesTheFileAsItWas) {
    const Bytes jpeg = jpegOf(*noisePage(500, 500, 24));
    ASSERT_GT(jpeg.size(), 150'000U);
    const SmallDisk disk(static_cast<unsigned>(jpeg.size() * 3 / 2 / 1024));
    ASSERT_TRUE(writeFile(disk / "page.jpg", jpeg)); // no room for a second one
    EXPECT_FALSE(setJpegMakeAndModel(disk / "page.jpg", "A ", "B"));
    EXPECT_EQ(readFile(disk / "page.jpg"), jpeg);
    EXPECT_EQ(folderEntries(disk.path()), std::vector<std::string>{"page.jpg"});
}

} // namespace
} // namespace paperline
