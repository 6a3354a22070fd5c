#include "codecs/tiff/TiffJoiner.h"

#include "PagePictures.h"
#include "PictureFiles.h"
#include "codecs/jpeg/JpegCodec.h"
#include "codecs/png/PngWriter.h"
#include "codecs/tiff/TiffCodec.h"
#include "codecs/tiff/TiffWriter.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/FileTesting.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace paperline {
namespace {

using namespace testing_support;
using Added = TiffJoiner::Added;

constexpr uint64_t plenty = 100'000'000;

class TiffJoin : public testing::Test {
protected:
    std::string putPage(const std::string& name, const BitmapImageRep& page, double dpi) const {
        return putBytes(name, encodeTiff(page, {dpi, dpi, 1}).value_or(Bytes()));
    }
    std::string putBytes(const std::string& name, const Bytes& bytes) const {
        EXPECT_TRUE(writeFile(folder_ / name, bytes));
        return folder_ / name;
    }
    void expectPage(int index, const BitmapImageRep& page, double dpi) const {
        const auto picture = decodeTiffPage(out_, index, plenty);
        ASSERT_TRUE(picture.has_value()) << index;
        expectSamePixels(page, *picture->image);
        EXPECT_EQ(picture->horizontalDpi, dpi);
        EXPECT_EQ(picture->verticalDpi, dpi);
    }
    // Whether a page's strip went into the joined file as it was.
    bool holds(const Bytes& strip) const {
        const Bytes file = readFile(out_).value_or(Bytes());
        return std::search(file.begin(), file.end(), strip.begin(), strip.end()) != file.end();
    }
    // What our writer put between header and directory.
    static Bytes dataOf(const std::string& path) {
        const Bytes file = readFile(path).value_or(Bytes());
        const size_t directory = file.at(4) + file.at(5) * 256U + file.at(6) * 65536U;
        return {file.begin() + 8, file.begin() + static_cast<ptrdiff_t>(directory) - 1};
    }

    TestFolder folder_;
    std::string out_ = folder_ / "joined.tif";
};

TEST_F(TiffJoin, DeclaresEveryPageAt300) {
    const PagePointer colour = noisePage(60, 50, 24);
    const PagePointer grey = noisePage(61, 51, 8);
    const PagePointer bits = noisePage(62, 52, 1);
    TiffJoiner joiner(out_, TiffJoining::declared300Dpi, readWhole);
    ASSERT_TRUE(joiner.isOpen());
    EXPECT_EQ(joiner.add(putPage("1", *colour, 200)), Added::yes);
    EXPECT_EQ(joiner.add(putPage("2", *grey, 600)), Added::yes);
    EXPECT_EQ(joiner.add(putPage("3", *bits, 72)), Added::yes);
    EXPECT_FALSE(fileExists(out_)); // not before it is whole
    EXPECT_TRUE(joiner.finish());
    EXPECT_EQ(tiffPageCount(out_), 3);
    expectPage(0, *colour, 300);
    expectPage(1, *grey, 300);
    expectPage(2, *bits, 300);
    for (const char* name : {"1", "2", "3"})
        EXPECT_TRUE(holds(dataOf(folder_ / name))) << name;
}

TEST_F(TiffJoin, DeclaresTheLetterPageAs612By792Points) {
    const PagePointer page = filledPage(2550, 3300, 1, [](size_t) { return uint8_t{255}; });
    TiffJoiner joiner(out_, TiffJoining::declared300Dpi, readWhole);
    EXPECT_EQ(joiner.add(putPage("1", *page, 200)), Added::yes);
    EXPECT_TRUE(joiner.finish());
    const auto picture = readPicture(out_, 0, plenty);
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->image->size(), (Size{612, 792}));
}

TEST_F(TiffJoin, UnchangedPagesKeepTheirResolutionAndData) {
    const PagePointer colour = noisePage(60, 50, 24);
    const PagePointer bits = noisePage(62, 52, 1);
    TiffJoiner joiner(out_, TiffJoining::unchanged, readWhole);
    EXPECT_EQ(joiner.add(putPage("1", *colour, 200)), Added::yes);
    EXPECT_EQ(joiner.add(putPage("2", *bits, 240)), Added::yes);
    EXPECT_TRUE(joiner.finish());
    expectPage(0, *colour, 200);
    expectPage(1, *bits, 240);
    EXPECT_TRUE(holds(dataOf(folder_ / "1")));
    EXPECT_TRUE(holds(dataOf(folder_ / "2")));
}

// Width, length, bits, compression (1: none), photometric, samples and rows.
TiffPage plainPage(uint32_t photometric, const Bytes& strip) {
    return {{{256, 3, {4}},
             {257, 3, {2}},
             {258, 3, {8}},
             {259, 3, {1}},
             {262, 3, {photometric}},
             {277, 3, {1}},
             {278, 3, {2}}},
            strip};
}

TEST_F(TiffJoin, OtherCompressionsAreEncodedAnewOrKept) {
    TiffFile file;
    TiffPage page = plainPage(0, {255, 254, 3, 4, 5, 6, 7, 8}); // 0 is white here
    file.add(page);
    const std::string path = putBytes("plain", file.bytes());
    const PagePointer expected = filledPage(4, 2, 8, [](size_t at) {
        return Bytes{0, 1, 252, 251, 250, 249, 248, 247}[at];
    });
    TiffJoiner declared(out_, TiffJoining::declared300Dpi, readWhole);
    EXPECT_EQ(declared.add(path), Added::yes);
    EXPECT_TRUE(declared.finish());
    expectPage(0, *expected, 300);
    EXPECT_FALSE(holds(page.strip));

    TiffJoiner unchanged(out_, TiffJoining::unchanged, readWhole);
    EXPECT_EQ(unchanged.add(path), Added::yes);
    EXPECT_TRUE(unchanged.finish());
    expectPage(0, *expected, 0); // it says nothing of its resolution
    EXPECT_TRUE(holds(page.strip));
}

// Two grey pixels of 16 bits, the more significant byte first: as they lie in the file they would
// be read the other way round from ours.
TEST_F(TiffJoin, WideSamplesOfTheOtherByteOrderAreTurned) {
    Bytes file{'M', 'M', 0, 42, 0, 0, 0, 12, 0xC0, 0x01, 0x20, 0x02, 0, 9};
    const auto addTag = [&file](uint8_t low, uint8_t value, bool isLong) {
        append(file, {1, low, 0, static_cast<uint8_t>(isLong ? 4 : 3), 0, 0, 0, 1});
        append(file, isLong ? Bytes{0, 0, 0, value} : Bytes{0, value, 0, 0});
    };
    addTag(0, 2, false);  // width
    addTag(1, 1, false);  // length
    addTag(2, 16, false); // bits
    addTag(3, 1, false);  // not compressed
    addTag(6, 1, false);  // 0 is black
    addTag(17, 8, true);  // where the strip is
    addTag(21, 1, false); // samples
    addTag(22, 1, false); // rows of the strip
    addTag(23, 4, true);  // its bytes
    append(file, {0, 0, 0, 0});
    TiffJoiner joiner(out_, TiffJoining::unchanged, readWhole);
    EXPECT_EQ(joiner.add(putBytes("wide", file)), Added::yes);
    EXPECT_TRUE(joiner.finish());
    const auto picture = decodeTiffPage(out_, 0, plenty);
    ASSERT_TRUE(picture.has_value());
    const std::span<const uint8_t> pixels = picture->image->bitmapData();
    EXPECT_NEAR(pixels[0], 0xC0, 1);
    EXPECT_NEAR(pixels[pixels.size() / 2], 0x20, 1);
}

TEST_F(TiffJoin, OtherPicturesBecomePages) {
    const PagePointer page = noisePage(33, 21, 24);
    const std::string png = putBytes("a.tif", encodePng(*page, {150, 150, 1}).value());
    const Bytes jpegBytes = encodeJpeg(*page, {90, 200, 200}).value();
    const std::string jpeg = putBytes("b.tif", jpegBytes);
    const auto decoded = decodeJpeg(jpegBytes);
    for (const TiffJoining joining : {TiffJoining::declared300Dpi, TiffJoining::unchanged}) {
        const bool unchanged = joining == TiffJoining::unchanged;
        TiffJoiner joiner(out_, joining, readWhole);
        EXPECT_EQ(joiner.add(png), Added::yes);
        EXPECT_EQ(joiner.add(jpeg), Added::yes);
        EXPECT_TRUE(joiner.finish());
        expectPage(0, *page, unchanged ? 150 : 300);
        expectPage(1, *decoded->image, unchanged ? 200 : 300);
    }
}

TEST_F(TiffJoin, OnlyTheFirstPageOfAFileIsTaken) {
    TiffJoiner two(folder_ / "two.tif", TiffJoining::unchanged, readWhole);
    const PagePointer first = noisePage(20, 20, 8);
    EXPECT_EQ(two.add(putPage("1", *first, 100)), Added::yes);
    EXPECT_EQ(two.add(putPage("2", *noisePage(30, 30, 8), 100)), Added::yes);
    EXPECT_TRUE(two.finish());
    for (const TiffJoining joining : {TiffJoining::declared300Dpi, TiffJoining::unchanged}) {
        TiffJoiner joiner(out_, joining, readWhole);
        EXPECT_EQ(joiner.add(folder_ / "two.tif"), Added::yes);
        EXPECT_TRUE(joiner.finish());
        EXPECT_EQ(tiffPageCount(out_), 1);
    }
}

TEST_F(TiffJoin, UnreadableFilesAddNothingAndMayBeTriedAgain) {
    const PagePointer page = noisePage(300, 300, 24);
    const std::string path = putPage("1", *page, 300);
    const Bytes whole = readFile(path).value();
    const Bytes half(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(whole.size() / 2));
    ASSERT_TRUE(createFolder(folder_ / "folder"));
    for (const TiffJoining joining : {TiffJoining::declared300Dpi, TiffJoining::unchanged}) {
        TiffJoiner joiner(out_, joining, readWhole);
        EXPECT_EQ(joiner.add(folder_ / "nothing there"), Added::unreadable);
        EXPECT_EQ(joiner.add(folder_ / "folder"), Added::unreadable);
        EXPECT_EQ(joiner.add(putBytes("text", Bytes{'t', 'e', 'x', 't'})), Added::unreadable);
        for (int attempt = 0; attempt < 1000; ++attempt)
            ASSERT_EQ(joiner.add(putBytes("late", half)), Added::unreadable);
        EXPECT_EQ(joiner.add(putBytes("late", whole)), Added::yes);
        EXPECT_TRUE(joiner.finish());
        EXPECT_EQ(tiffPageCount(out_), 1);
        expectPage(0, *page, 300);
        EXPECT_LT(readFile(out_)->size(), whole.size() + 100); // no trace of the attempts
    }
}

// A strip that the directory places behind the file's end.
TEST_F(TiffJoin, AStripOutsideTheFileIsUnreadable) {
    TiffFile file;
    TiffPage page = plainPage(1, Bytes(8, 7));
    file.add(page);
    Bytes bytes = file.bytes();
    bytes[8 + 8 + 2 + 5 * 12 + 8 + 2] = 1; // the strip's offset is 65536 more
    TiffJoiner joiner(out_, TiffJoining::unchanged, readWhole);
    EXPECT_EQ(joiner.add(putBytes("cut", bytes)), Added::unreadable);
}

TEST_F(TiffJoin, AnAbandonedJoinLeavesNothing) {
    {
        TiffJoiner joiner(out_, TiffJoining::unchanged, readWhole);
        EXPECT_EQ(joiner.add(putPage("1", *noisePage(20, 20, 8), 100)), Added::yes);
    }
    EXPECT_EQ(folderEntries(folder_.path()), std::vector<std::string>{"1"});
}

TEST_F(TiffJoin, WithoutAPageThereIsNoFile) {
    ASSERT_TRUE(put(folder_ / "1", "no picture"));
    TiffJoiner joiner(out_, TiffJoining::unchanged, readWhole);
    EXPECT_EQ(joiner.add(folder_ / "1"), Added::unreadable);
    EXPECT_FALSE(joiner.finish());
    EXPECT_EQ(folderEntries(folder_.path()), std::vector<std::string>{"1"});
}

TEST_F(TiffJoin, AFolderThatIsNotThere) {
    TiffJoiner joiner(folder_ / "gone/joined.tif", TiffJoining::declared300Dpi, readWhole);
    EXPECT_FALSE(joiner.isOpen());
    EXPECT_EQ(joiner.add(putPage("1", *noisePage(2, 2, 8), 100)), Added::outputFailed);
    EXPECT_FALSE(joiner.finish());
}

TEST_F(TiffJoin, AFullDiskLeavesTheOlderFileAlone) {
    const std::string path = putPage("1", *noisePage(400, 400, 24), 300); // half a megabyte
    const SmallDisk disk(1024);
    const std::string target = disk / "joined.tif";
    ASSERT_TRUE(put(target, "older"));
    {
        TiffJoiner joiner(target, TiffJoining::declared300Dpi, readWhole);
        Added result = Added::yes;
        for (int page = 0; page < 10 && result == Added::yes; ++page)
            result = joiner.add(path);
        EXPECT_EQ(result, Added::outputFailed);
    }
    EXPECT_EQ(textOf(target), "older");
    EXPECT_EQ(folderEntries(disk.path()), std::vector<std::string>{"joined.tif"});
}

// Beyond 4 GB offsets need 64 bits; here beyond 200 kB.
TEST_F(TiffJoin, ALargeFileGetsLargeOffsets) {
    std::vector<PagePointer> pages;
    TiffJoiner joiner(out_, TiffJoining::declared300Dpi, readWhole, 200'000);
    for (int32_t number = 0; number < 12; ++number) {
        pages.push_back(noisePage(100 + number,
                                  90,
                                  number % 3 == 0   ? 1
                                  : number % 3 == 1 ? 8
                                                    : 24));
        const std::string name = std::to_string(number);
        EXPECT_EQ(joiner.add(putPage(name, *pages.back(), 100)), Added::yes);
    }
    EXPECT_TRUE(joiner.finish());
    EXPECT_EQ(readFile(out_)->at(2), 43);
    EXPECT_EQ(tiffPageCount(out_), 12);
    for (int number = 0; number < 12; ++number)
        expectPage(number, *pages[static_cast<size_t>(number)], 300);
    EXPECT_EQ(std::ranges::count(folderEntries(folder_.path()), "joined.tif"), 1);
}

TEST_F(TiffJoin, ALargeFirstPageStartsALargeFile) {
    const PagePointer page = noisePage(300, 300, 24);
    TiffJoiner joiner(out_, TiffJoining::unchanged, readWhole, 100'000);
    EXPECT_EQ(joiner.add(putPage("1", *page, 300)), Added::yes);
    EXPECT_TRUE(joiner.finish());
    EXPECT_EQ(readFile(out_)->at(2), 43);
    expectPage(0, *page, 300);
}

} // namespace
} // namespace paperline
