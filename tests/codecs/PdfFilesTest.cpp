#include "codecs/pdf/PdfFiles.h"

#include "PictureFiles.h"
#include "codecs/jpeg/JpegCodec.h"
#include "tests/support/FileTesting.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>

namespace paperline {
namespace {

using namespace testing_support;
using Added = PdfJoiner::Added;

constexpr int64_t creationSeconds = 1'000'000'000; // 2001-09-09 01:46:40 UTC

std::shared_ptr<BitmapImageRep> noise(int32_t width, int32_t height, int bits) {
    auto page = BitmapImageRep::makePage(width, height, bits);
    std::mt19937 random(11);
    for (uint8_t& sample : page->bitmapData())
        sample = static_cast<uint8_t>(random());
    return page;
}

std::string textOf(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string jpegOf(int32_t width, int32_t height, int bits, uint16_t dpi) {
    return textOf(encodeJpeg(*noise(width, height, bits), {60, dpi, dpi}).value_or(Bytes()));
}

bool contains(const std::string& file, const std::string& text) {
    return file.find(text) != std::string::npos;
}

size_t occurrences(const std::string& file, const std::string& text) {
    size_t count = 0;
    for (size_t at = file.find(text); at != std::string::npos; at = file.find(text, at + 1))
        ++count;
    return count;
}

bool isSound(const std::string& path) {
    return shell("qpdf --check '" + path + "'");
}

class PdfFiles : public ::testing::Test {
protected:
    std::string picture(const std::string& name, const std::string& content) {
        EXPECT_TRUE(put(folder_ / name, content));
        return folder_ / name;
    }

    // The joined file's path, "" when it could not be made.
    std::string joined(const std::string& name, const std::vector<std::string>& pictures) {
        const auto joiner = PdfJoiner::open(folder_ / name, creationSeconds);
        if (!joiner)
            return {};
        for (const std::string& path : pictures)
            EXPECT_EQ(joiner->add(path), Added::yes) << path;
        return joiner->finish() ? folder_ / name : std::string();
    }

    std::vector<std::string> namesIn(const std::string& path) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    // The file with its streams as they are without compression.
    std::string unpacked(const std::string& path) {
        const std::string plain = path + ".plain";
        EXPECT_TRUE(shell("qpdf --stream-data=uncompress '" + path + "' '" + plain + "'"));
        return testing_support::textOf(plain);
    }

    TestFolder folder_;
};

TEST_F(PdfFiles, StartsWithItsVersionAndEndsWithItsMark) {
    const std::string file =
        testing_support::textOf(joined("a.pdf", {picture("1.jpg", jpegOf(600, 300, 24, 300))}));
    EXPECT_EQ(file.substr(0, 9), "%PDF-1.4\n");
    EXPECT_EQ(file.substr(file.size() - 6), "%%EOF\n");
    EXPECT_TRUE(contains(file, "/CreationDate (D:20010909014640Z)"));
}

TEST_F(PdfFiles, KeepsItsProducerInAnObjectThatAPatchCovers) {
    std::vector<std::string> pictures(40, picture("1.jpg", jpegOf(60, 30, 8, 300)));
    const std::string file = testing_support::textOf(joined("a.pdf", pictures));
    const size_t key = file.find("/Producer ");
    ASSERT_NE(key, std::string::npos);
    EXPECT_EQ(file.find("Producer"), key + 1) << "another text would be taken for the key";
    const std::string reference =
        file.substr(key + 10, file.find_first_of("/>", key + 10) - key - 10);
    const std::string number = reference.substr(0, reference.find(' '));
    EXPECT_EQ(reference.substr(number.size(), 4), " 0 R");
    EXPECT_EQ(number.find_first_not_of("0123456789"), std::string::npos);
    const size_t object = file.find("\n" + number + " 0 obj\n(");
    ASSERT_NE(object, std::string::npos);
    // Not the tail of a greater number.
    EXPECT_EQ(file.find(number + " 0 obj\n"), object + 1);
    const size_t text = object + number.size() + 9;
    const size_t end = file.find(')', text);
    EXPECT_GE(end - text, 34U);
    EXPECT_EQ(file.substr(text, end - text), "Paperline document scanning, Linux");
}

TEST_F(PdfFiles, TakesJpegDataAsItIs) {
    const std::string colour = jpegOf(600, 300, 24, 300);
    const std::string grey = jpegOf(64, 32, 8, 100);
    const std::string path = joined("a.pdf", {picture("1.jpg", colour), picture("2.jpg", grey)});
    const std::string file = testing_support::textOf(path);
    EXPECT_TRUE(contains(file, "stream\n" + colour));
    EXPECT_TRUE(contains(file, "stream\n" + grey));
    EXPECT_EQ(occurrences(file, "/DCTDecode"), 2U);
    EXPECT_TRUE(contains(file, "/DeviceRGB"));
    EXPECT_TRUE(contains(file, "/DeviceGray"));
    EXPECT_TRUE(contains(file, "/Width 600"));
    EXPECT_TRUE(contains(file, "/Height 32"));
    EXPECT_TRUE(isSound(path));
}

TEST_F(PdfFiles, GivesEachPageItsSizeInPoints) {
    const std::string path = joined("a.pdf",
                                    {picture("1.jpg", jpegOf(600, 300, 24, 300)),
                                     picture("2.jpg", jpegOf(50, 25, 8, 100)),
                                     picture("3.jpg", jpegOf(1, 3, 8, 7)),
                                     picture("4.pgm", "P5 2 3 255\n      ")});
    const std::string file = testing_support::textOf(path);
    EXPECT_TRUE(contains(file, "/MediaBox [ 0 0 144 72 ]"));
    EXPECT_TRUE(contains(file, "q 144 0 0 72 0 0 cm /Im0 Do Q"));
    EXPECT_TRUE(contains(file, "/MediaBox [ 0 0 36 18 ]"));
    EXPECT_TRUE(contains(file, "/MediaBox [ 0 0 10.2857 30.8571 ]"));
    EXPECT_TRUE(contains(file, "/MediaBox [ 0 0 2 3 ]")) << "a picture without a resolution";
    EXPECT_TRUE(isSound(path));
}

TEST_F(PdfFiles, TakesThePixelsOfOtherPictures) {
    const std::string bitmap = std::string("P4 16 2\n") + "\x5A\x0F\xF0\x33";
    const std::string colour = "P6 2 2 255\nabcdefghijkl";
    const std::string path = joined("a.pdf", {picture("1.pbm", bitmap), picture("2.ppm", colour)});
    const std::string file = unpacked(path);
    EXPECT_TRUE(contains(file, "/BitsPerComponent 1 "));
    EXPECT_TRUE(contains(file, "stream\n\xA5\xF0\x0F\xCC")) << "zero is black here";
    EXPECT_TRUE(contains(file, "stream\nabcdefghijkl"));
    EXPECT_TRUE(isSound(path));
}

TEST_F(PdfFiles, TakesOnePageOfPicturesInOtherFolders) {
    const TestFolder other;
    EXPECT_TRUE(put(other / "2.jpg", jpegOf(20, 10, 8, 72)));
    const std::string first = jpegOf(10, 10, 8, 72);
    const std::string path = joined("a.pdf", {picture("1.jpg", first), other / "2.jpg"});
    EXPECT_TRUE(contains(testing_support::textOf(path), testing_support::textOf(other / "2.jpg")));
    EXPECT_TRUE(isSound(path));
}

TEST_F(PdfFiles, WritesEqualBytesForEqualPages) {
    const std::vector<std::string> pictures{picture("1.jpg", jpegOf(60, 30, 24, 300)),
                                            picture("2.pgm", "P5 2 2 255\nabcd")};
    const std::string first = testing_support::textOf(joined("a.pdf", pictures));
    EXPECT_GT(first.size(), 500U);
    EXPECT_EQ(first, testing_support::textOf(joined("b.pdf", pictures)));
    const std::string fewer = testing_support::textOf(joined("c.pdf", {pictures[0]}));
    const auto identifier = [](const std::string& file) {
        return file.substr(file.find("/ID ["), 71);
    };
    EXPECT_NE(identifier(first), identifier(fewer));
    EXPECT_NE(first, fewer);
}

TEST_F(PdfFiles, ListsThousandsOfPagesInOrder) {
    const std::string one = picture("1.jpg", jpegOf(10, 10, 8, 72));
    const std::string two = picture("2.jpg", jpegOf(20, 10, 8, 72));
    std::vector<std::string> pictures(1000, one);
    pictures[64] = two;
    pictures[999] = two;
    const std::string path = joined("a.pdf", pictures);
    const auto source = PdfPageSource::open(path);
    ASSERT_TRUE(source);
    ASSERT_EQ(source->pageCount(), 1000);
    EXPECT_EQ(source->mediaBox(64), (Rect{0, 0, 10, 10}));
    EXPECT_EQ(source->mediaBox(65), (Rect{0, 0, 20, 10}));
    EXPECT_EQ(source->mediaBox(1000), (Rect{0, 0, 20, 10}));
    EXPECT_TRUE(isSound(path));
}

TEST_F(PdfFiles, APageThatCannotBeReadMayBeTriedAgain) {
    const std::string whole = jpegOf(600, 300, 24, 300);
    const auto joiner = PdfJoiner::open(folder_ / "a.pdf", creationSeconds);
    ASSERT_TRUE(joiner);
    EXPECT_EQ(joiner->add(folder_ / "1.jpg"), Added::unreadable) << "missing";
    EXPECT_EQ(joiner->add(folder_.path()), Added::unreadable) << "a folder";
    EXPECT_EQ(joiner->add(picture("1.jpg", "")), Added::unreadable) << "empty";
    EXPECT_EQ(joiner->add(picture("1.jpg", "This is a text.")), Added::unreadable);
    EXPECT_EQ(joiner->add(picture("1.jpg", whole.substr(0, 100))), Added::unreadable);
    EXPECT_EQ(joiner->add(picture("1.jpg", whole.substr(0, whole.size() / 2))), Added::unreadable);
    EXPECT_EQ(joiner->add(picture("1.jpg", whole)), Added::yes);
    EXPECT_TRUE(joiner->finish());
    const auto source = PdfPageSource::open(folder_ / "a.pdf");
    ASSERT_TRUE(source);
    EXPECT_EQ(source->pageCount(), 1);
    EXPECT_TRUE(isSound(folder_ / "a.pdf"));
}

TEST_F(PdfFiles, HasNoOutputWhereNoFileCanBeMade) {
    EXPECT_FALSE(PdfJoiner::open(folder_ / "missing/a.pdf", creationSeconds));
    EXPECT_FALSE(PdfJoiner::open(picture("file", "x") + "/a.pdf", creationSeconds));
    EXPECT_FALSE(PdfJoiner::open("/proc/a.pdf", creationSeconds)) << "nobody may write there";
    EXPECT_FALSE(PdfDrawing::open("/proc/a.pdf", creationSeconds));
}

TEST_F(PdfFiles, AFullDiskLeavesWhatHadTheName) {
    const std::string one = picture("1.jpg", jpegOf(600, 600, 24, 300));
    const SmallDisk disk(64);
    EXPECT_TRUE(put(disk / "a.pdf", "the file before"));
    {
        const auto over = PdfJoiner::open(disk / "a.pdf", creationSeconds);
        const auto fresh = PdfJoiner::open(disk / "b.pdf", creationSeconds);
        ASSERT_TRUE(over && fresh);
        EXPECT_EQ(over->add(one), Added::yes);
        EXPECT_EQ(fresh->add(one), Added::yes);
        EXPECT_FALSE(over->finish());
        EXPECT_FALSE(fresh->finish());
    }
    EXPECT_EQ(namesIn(disk.path()), std::vector<std::string>{"a.pdf"});
    EXPECT_EQ(testing_support::textOf(disk / "a.pdf"), "the file before");
}

TEST_F(PdfFiles, APictureThatVanishesLeavesNoFile) {
    const std::string one = picture("1.jpg", jpegOf(60, 30, 8, 300));
    {
        const auto joiner = PdfJoiner::open(folder_ / "a.pdf", creationSeconds);
        ASSERT_TRUE(joiner);
        EXPECT_EQ(joiner->add(one), Added::yes);
        std::filesystem::remove(one);
        EXPECT_FALSE(joiner->finish());
    }
    EXPECT_EQ(namesIn(folder_.path()), std::vector<std::string>{});
}

TEST_F(PdfFiles, AnUnfinishedFileLeavesNothing) {
    const std::string one = picture("1.jpg", jpegOf(60, 30, 8, 300));
    {
        const auto joiner = PdfJoiner::open(folder_ / "a.pdf", creationSeconds);
        ASSERT_TRUE(joiner);
        EXPECT_EQ(joiner->add(one), Added::yes);
    }
    EXPECT_EQ(namesIn(folder_.path()), std::vector<std::string>{"1.jpg"});
}

TEST_F(PdfFiles, OnlyPdfFilesAreSources) {
    EXPECT_FALSE(PdfPageSource::open(folder_ / "missing.pdf"));
    EXPECT_FALSE(PdfPageSource::open(folder_.path()));
    EXPECT_FALSE(PdfPageSource::open(picture("empty.pdf", "")));
    EXPECT_FALSE(PdfPageSource::open(picture("text.pdf", "This is a text, whatever its name.")));
    EXPECT_FALSE(PdfPageSource::open(picture("picture.pdf", jpegOf(60, 30, 8, 300))));
}

TEST_F(PdfFiles, APageOutsideADocumentIsUsLetter) {
    const auto source =
        PdfPageSource::open(joined("a.pdf", {picture("1.jpg", jpegOf(144, 72, 8, 72))}));
    ASSERT_TRUE(source);
    EXPECT_EQ(source->mediaBox(1), (Rect{0, 0, 144, 72}));
    EXPECT_EQ(source->mediaBox(0), (Rect{0, 0, 612, 792}));
    EXPECT_EQ(source->mediaBox(2), (Rect{0, 0, 612, 792}));
}

TEST_F(PdfFiles, DrawsPagesOfOtherFiles) {
    const std::string first = jpegOf(144, 72, 8, 72);
    const std::string second = jpegOf(30, 40, 24, 72);
    const auto source =
        PdfPageSource::open(joined("a.pdf", {picture("1.jpg", first), picture("2.jpg", second)}));
    ASSERT_TRUE(source);
    const auto drawing = PdfDrawing::open(folder_ / "b.pdf", creationSeconds);
    ASSERT_TRUE(drawing);
    drawing->drawPage(*source, 1); // outside a page: lost
    drawing->beginPage(source->mediaBox(2));
    drawing->drawPage(*source, 2);
    drawing->beginPage({10, 20, 300, 400}); // ends the page before
    drawing->endPage();
    drawing->drawPage(*source, 1); // lost as well
    EXPECT_TRUE(drawing->close());

    const auto drawn = PdfPageSource::open(folder_ / "b.pdf");
    ASSERT_TRUE(drawn);
    ASSERT_EQ(drawn->pageCount(), 2);
    EXPECT_EQ(drawn->mediaBox(1), (Rect{0, 0, 30, 40}));
    EXPECT_EQ(drawn->mediaBox(2), (Rect{10, 20, 300, 400}));
    const std::string file = testing_support::textOf(folder_ / "b.pdf");
    EXPECT_TRUE(contains(file, second));
    EXPECT_FALSE(contains(file, first));
    EXPECT_TRUE(isSound(folder_ / "b.pdf"));
}

TEST_F(PdfFiles, DrawsAfterTheSourceIsGone) {
    const std::string path = joined("a.pdf", {picture("1.jpg", jpegOf(144, 72, 8, 72))});
    auto source = PdfPageSource::open(path);
    const auto drawing = PdfDrawing::open(folder_ / "b.pdf", creationSeconds);
    ASSERT_TRUE(source && drawing);
    drawing->beginPage({0, 0, 144, 72});
    drawing->drawPage(*source, 1);
    drawing->endPage();
    source.reset();
    EXPECT_TRUE(drawing->close());
    EXPECT_TRUE(isSound(folder_ / "b.pdf"));
}

TEST_F(PdfFiles, MakesADocumentOfAnImage) {
    for (const int bits : {1, 8, 24}) {
        const auto image = noise(19, 5, bits);
        const auto bytes = pdfOfPicture(*image, {200, 100.5}, creationSeconds);
        ASSERT_TRUE(bytes) << bits;
        const std::string path = picture(std::to_string(bits) + ".pdf", textOf(*bytes));
        EXPECT_TRUE(isSound(path)) << bits;
        EXPECT_EQ(bytes, pdfOfPicture(*image, {200, 100.5}, creationSeconds)) << bits;
        const std::string file = unpacked(path);
        const auto pixels = image->bitmapData();
        EXPECT_TRUE(contains(file, "stream\n" + std::string(pixels.begin(), pixels.end()))) << bits;
        EXPECT_TRUE(contains(file, bits == 1 ? "/BitsPerComponent 1 " : "/BitsPerComponent 8 "));
        EXPECT_TRUE(contains(file, bits == 24 ? "/DeviceRGB" : "/DeviceGray")) << bits;
        const auto source = PdfPageSource::open(path);
        ASSERT_TRUE(source) << bits;
        EXPECT_EQ(source->pageCount(), 1);
        EXPECT_EQ(source->mediaBox(1), (Rect{0, 0, 200, 100.5}));
    }
}

TEST_F(PdfFiles, RefusesImagesOfOtherLayouts) {
    const auto padded = BitmapImageRep::make({4, 4, 8, 3, 32, 16});
    const auto deep = BitmapImageRep::make({4, 4, 16, 1, 16, 8});
    ASSERT_TRUE(padded && deep);
    EXPECT_FALSE(pdfOfPicture(*padded, {4, 4}, creationSeconds));
    EXPECT_FALSE(pdfOfPicture(*deep, {4, 4}, creationSeconds));
}

} // namespace
} // namespace paperline
