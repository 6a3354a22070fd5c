#include "codecs/tiff/TiffMetadata.h"

#include "PagePictures.h"
#include "PictureFiles.h"
#include "codecs/tiff/TiffCodec.h"
#include "codecs/tiff/TiffJoiner.h"
#include "codecs/tiff/TiffWriter.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/FileTesting.h"

#include <gtest/gtest.h>
#include <map>

namespace paperline {
namespace {

using namespace testing_support;

uint32_t littleEndian(const Bytes& bytes, size_t at, size_t count) {
    uint32_t number = 0;
    for (size_t index = count; index > 0; --index)
        number = number << 8U | bytes.at(at + index - 1);
    return number;
}

// Every tag of the first page with its values' bytes, wherever they stand.
std::map<uint32_t, Bytes> tagsOf(const Bytes& file) {
    const std::map<uint32_t, size_t> sizes{{1, 1}, {2, 1}, {3, 2}, {4, 4}, {5, 8}, {7, 1}};
    std::map<uint32_t, Bytes> tags;
    const size_t at = littleEndian(file, 4, 4);
    const uint32_t count = littleEndian(file, at, 2);
    for (size_t entry = at + 2; entry < at + 2 + 12 * size_t{count}; entry += 12) {
        const size_t size =
            sizes.at(littleEndian(file, entry + 2, 2)) * littleEndian(file, entry + 4, 4);
        const size_t values = size > 4 ? littleEndian(file, entry + 8, 4) : entry + 8;
        const auto begin = file.begin() + static_cast<ptrdiff_t>(values);
        tags[littleEndian(file, entry, 2)] = Bytes(begin, begin + static_cast<ptrdiff_t>(size));
    }
    return tags;
}

Bytes zeroEnded(std::string_view text) {
    Bytes bytes(text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

class TiffMetadata : public testing::Test {
protected:
    std::string putPage(const BitmapImageRep& page) const {
        EXPECT_TRUE(writeFile(path(), encodeTiff(page, {200, 300, 1}).value_or(Bytes())));
        return path();
    }
    std::string path() const { return folder_ / "page.dat"; }
    TestFolder folder_;
};

TEST_F(TiffMetadata, OnlyTheTwoTextsChange) {
    const PagePointer page = noisePage(300, 400, 24);
    putPage(*page);
    const Bytes before = readFile(path()).value();
    EXPECT_TRUE(setTiffMakeAndModel(path(), "Alpha ", "3000 Duplex"));
    const Bytes after = readFile(path()).value();
    auto tags = tagsOf(after);
    EXPECT_EQ(tags[271], zeroEnded("Alpha "));
    EXPECT_EQ(tags[272], zeroEnded("3000 Duplex"));
    tags.erase(271);
    tags.erase(272);
    EXPECT_EQ(tags, tagsOf(before));
    // Strips and the old directory stand where they stood; the header points to the new one.
    EXPECT_TRUE(std::equal(before.begin() + 8, before.end() - 4, after.begin() + 8));
    const auto picture = decodeTiffPage(path(), 0, 1'000'000);
    ASSERT_TRUE(picture.has_value());
    expectSamePixels(*page, *picture->image);
    EXPECT_EQ(picture->horizontalDpi, 200);
    EXPECT_EQ(picture->verticalDpi, 300);
}

TEST_F(TiffMetadata, OlderTextsAreReplaced) {
    putPage(*noisePage(3, 3, 1));
    EXPECT_TRUE(setTiffMakeAndModel(path(), "A much longer maker ", "and a long model"));
    EXPECT_TRUE(setTiffMakeAndModel(path(), "B ", "C"));
    auto tags = tagsOf(readFile(path()).value());
    EXPECT_EQ(tags[271], zeroEnded("B "));
    EXPECT_EQ(tags[272], zeroEnded("C"));
}

TEST_F(TiffMetadata, TagsThatNobodyKnowsStay) {
    TiffFile file;
    file.add({{{256, 3, {2}},
               {257, 3, {1}},
               {258, 3, {8}},
               {259, 3, {1}},
               {262, 3, {1}},
               {277, 3, {1}},
               {278, 3, {1}},
               {282, 5, {300, 1}},
               {283, 5, {300, 1}},
               {296, 3, {2}},
               {60001, 4, {17, 4, 99}}},
              {1, 2}});
    ASSERT_TRUE(writeFile(path(), file.bytes()));
    EXPECT_TRUE(setTiffMakeAndModel(path(), "A ", "B"));
    auto tags = tagsOf(readFile(path()).value());
    EXPECT_EQ(tags[60001], (Bytes{17, 0, 0, 0, 4, 0, 0, 0, 99, 0, 0, 0}));
    EXPECT_EQ(tags[282], (Bytes{0x2C, 1, 0, 0, 1, 0, 0, 0}));
}

TEST_F(TiffMetadata, OtherPagesStay) {
    const PagePointer first = noisePage(10, 10, 8);
    const PagePointer second = noisePage(20, 20, 24);
    const std::string both = folder_ / "both.tif";
    TiffJoiner joiner(both, TiffJoining::unchanged, readWhole);
    EXPECT_EQ(joiner.add(putPage(*first)), TiffJoiner::Added::yes);
    EXPECT_EQ(joiner.add(putPage(*second)), TiffJoiner::Added::yes);
    EXPECT_TRUE(joiner.finish());
    EXPECT_TRUE(setTiffMakeAndModel(both, "A ", "B"));
    ASSERT_EQ(tiffPageCount(both), 2);
    expectSamePixels(*first, *decodeTiffPage(both, 0, 1000)->image);
    expectSamePixels(*second, *decodeTiffPage(both, 1, 1000)->image);
    EXPECT_EQ(tagsOf(readFile(both).value())[271], zeroEnded("A "));
}

TEST_F(TiffMetadata, TheTextsReachTheJoinedFile) {
    putPage(*noisePage(10, 10, 8));
    EXPECT_TRUE(setTiffMakeAndModel(path(), "Alpha ", "3000"));
    TiffJoiner joiner(folder_ / "joined", TiffJoining::unchanged, readWhole);
    EXPECT_EQ(joiner.add(path()), TiffJoiner::Added::yes);
    EXPECT_TRUE(joiner.finish());
    auto tags = tagsOf(readFile(folder_ / "joined").value());
    EXPECT_EQ(tags[271], zeroEnded("Alpha "));
    EXPECT_EQ(tags[272], zeroEnded("3000"));
}

TEST_F(TiffMetadata, WhatIsNoTiffStaysAsItIs) {
    ASSERT_TRUE(put(path(), "no picture"));
    EXPECT_FALSE(setTiffMakeAndModel(path(), "A ", "B"));
    EXPECT_EQ(textOf(path()), "no picture");
    EXPECT_FALSE(setTiffMakeAndModel(folder_ / "gone", "A ", "B"));
    EXPECT_EQ(folderEntries(folder_.path()), std::vector<std::string>{"page.dat"});
}

TEST_F(TiffMetadata, AFullDiskLeavesTheFileAsItWas) {
    const Bytes page = encodeTiff(*noisePage(400, 400, 24), {}).value();
    const SmallDisk disk(1024);
    const std::string target = disk / "page.tif";
    ASSERT_TRUE(writeFile(target, page)); // no room for a second one
    EXPECT_FALSE(setTiffMakeAndModel(target, "A ", "B"));
    EXPECT_EQ(readFile(target), page);
    EXPECT_EQ(folderEntries(disk.path()), std::vector<std::string>{"page.tif"});
}

TEST_F(TiffMetadata, ThePermissionsStay) {
    putPage(*noisePage(3, 3, 8));
    ASSERT_EQ(::chmod(path().c_str(), 0640), 0);
    EXPECT_TRUE(setTiffMakeAndModel(path(), "A ", "B"));
    struct stat status = {};
    ASSERT_EQ(::stat(path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

} // namespace
} // namespace paperline
