// Files as every brand saves them: two put the scanner's name in, the others leave files alone.
#include "OutputFixture.h"

#include "ToolOutput.h"
#include "codecs/pdf/PdfDocument.h"
#include "codecs/pictures/PictureReader.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/Brands.h"

#include <cstdio>
#include <map>
#include <random>
#include <sys/resource.h>

namespace paperline {
namespace {

std::string shown(const std::string& tags, const std::string& path) {
    return outputOf("exiftool -s3 " + tags + " '" + path + "' 2>&1");
}

class BrandMetadata : public OutputTest {
protected:
    void SetUp() override {
        OutputTest::SetUp();
        host().secondsSinceEpoch = [] { return 1'700'000'000.0; };
    }

    // The files that a scan of two pages leaves, by name, the staged ones of multi-page files too.
    std::map<std::string, Bytes> filesOf(uint32_t brand, int32_t format, int bits) {
        gBrandNumber = brand;
        makeStagingFolders();
        for (const std::string& name : folderEntries(folder))
            removePath(inFolder(name));
        controller->profileFileformatSelect = format;
        controller->currentPage = controller->currentMultiPage = 1;
        firstPageOfBatch = true;
        for (uint32_t seed : {1U, 2U}) {
            std::mt19937 random(seed);
            Bytes pixels(static_cast<size_t>(bits == 24 ? 3 : 1) * 60 * 40);
            for (uint8_t& sample : pixels)
                sample = static_cast<uint8_t>(random());
            TestPage page = makeTestPage(60, 40, bits);
            for (int32_t y = 0; y < 40; ++y)
                std::copy_n(pixels.begin() + y * (bits == 24 ? 180 : 60),
                            page.representation->row(y).size(),
                            page.representation->row(y).begin());
            EXPECT_EQ(save(page), 0);
        }
        if (format == formatMultiPagePdf || format == formatMultiPageTiff) {
            EXPECT_TRUE(controller->joinMultiPageFile());
        }
        std::map<std::string, Bytes> files;
        for (const std::string& name : folderEntries(folder))
            files[name] = readFile(inFolder(name)).value_or(Bytes());
        return files;
    }
};

TEST_F(BrandMetadata, OnlyBrandsTwoAndThreeTouchTheirFiles) {
    for (int32_t format = formatBmp; format <= formatPng; ++format) {
        const int bits = format == formatGif ? 8 : 24; // no colours to be chosen
        const auto plain = filesOf(7, format, bits);
        ASSERT_EQ(plain.size(),
                  format == formatMultiPagePdf || format == formatMultiPageTiff ? 1U : 2U);
        const bool carriesNames = format == formatJpeg || format == formatPdf ||
                                  format == formatMultiPagePdf || format == formatTiff ||
                                  format == formatMultiPageTiff;
        for (const uint32_t brand : testing_support::everyBrand)
            EXPECT_EQ(filesOf(brand, format, bits) == plain,
                      !carriesNames || (brand != 2 && brand != 3))
                << "format " << format << ", brand " << brand;
    }
}

TEST_F(BrandMetadata, ExiftoolReadsTheNamesOfPictures) {
    const std::map<int32_t, std::string> names{{formatJpeg, "Image_00001.jpg"},
                                               {formatTiff, "Image_00001.tif"}};
    for (const auto& [format, name] : names)
        for (const int bits : {1, 8, 24}) {
            filesOf(2, format, bits);
            EXPECT_EQ(shown("-IFD0:Make -IFD0:Model -XResolution -YResolution", inFolder(name)),
                      "Alpha\n3000 Duplex\n288\n288\n")
                << name << ", " << bits << " bits";
        }
}

TEST_F(BrandMetadata, ExiftoolHasNothingToSayAgainstOurExif) {
    for (const int bits : {8, 24}) {
        filesOf(3, formatJpeg, bits);
        EXPECT_EQ(shown("-validate -warning -a", inFolder("Image_00001.jpg")), "OK\n");
    }
}

TEST_F(BrandMetadata, ThePictureIsThatOfOtherBrands) {
    for (const int32_t format : {formatJpeg, formatTiff}) {
        const std::string name = format == formatJpeg ? "Image_00001.jpg" : "Image_00001.tif";
        filesOf(7, format, 24);
        const auto plain = readPicture(inFolder(name), 0, 10'000);
        filesOf(2, format, 24);
        const auto named = readPicture(inFolder(name), 0, 10'000);
        ASSERT_TRUE(plain && named);
        EXPECT_TRUE(std::equal(plain->image->bitmapData().begin(),
                               plain->image->bitmapData().end(),
                               named->image->bitmapData().begin(),
                               named->image->bitmapData().end()));
        EXPECT_EQ(plain->horizontalDpi, named->horizontalDpi);
    }
}

TEST_F(BrandMetadata, JoinedPagesKeepTheNames) {
    filesOf(3, formatMultiPageTiff, 8);
    EXPECT_EQ(shown("-IFD0:Make -IFD0:Model -IFD1:Make -IFD1:Model", inFolder("Image_00001.tif")),
              "Alpha\n3000 Duplex\nAlpha\n3000 Duplex\n");
}

TEST_F(BrandMetadata, TheProducerOfOurPdfIsTheModel) {
    for (const int32_t format : {formatPdf, formatMultiPagePdf}) {
        const Bytes before = filesOf(7, format, 24).at("Image_00001.pdf");
        const Bytes after = filesOf(2, format, 24).at("Image_00001.pdf");
        const std::string plain(before.begin(), before.end());
        std::string named(after.begin(), after.end());
        const std::string producer = "(" + std::string(pdfProducer) + ")";
        const std::string patched = "(3000 Duplex" + std::string(23, '\0') + ")";
        ASSERT_EQ(producer.size(), patched.size());
        ASSERT_NE(named.find(patched), std::string::npos);
        EXPECT_EQ(named.replace(named.find(patched), patched.size(), producer), plain);
        const std::string path = "'" + inFolder("Image_00001.pdf") + "'";
        EXPECT_EQ(outputOf("qpdf --check " + path + " 2>&1 >/dev/null"), "");
        EXPECT_EQ(outputOf("pdfinfo " + path + " | grep -a ^Producer | tr -d '\\0'"),
                  "Producer:        3000 Duplex\n");
    }
}

TEST_F(BrandMetadata, ALargePdfIsPatchedWithoutHoldingIt) {
    gBrandNumber = 2;
    const std::string path = inFolder("large.pdf");
    const std::string end = "/Producer 4 0 R\n4 0 obj\n(" + std::string(34, 'p') + ")";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    constexpr long hole = 64L * 1024 * 1024;
    ASSERT_EQ(std::fseek(file, hole, SEEK_SET), 0);
    ASSERT_EQ(std::fwrite(end.data(), 1, end.size(), file), end.size());
    ASSERT_EQ(std::fclose(file), 0);
    rusage before = {};
    rusage after = {};
    ASSERT_EQ(getrusage(RUSAGE_SELF, &before), 0);
    controller->replacePDFProducer(path, "Alpha 3000 Duplex");
    ASSERT_EQ(getrusage(RUSAGE_SELF, &after), 0);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 8 * 1024); // kilobytes
    EXPECT_EQ(outputOf("tail -c 36 '" + path + "' | tr '\\0' z"),
              "(3000 Duplex" + std::string(23, 'z') + ")");
}

} // namespace
} // namespace paperline
