// SANE's pnm backend: a picture file goes through device and worker unchanged.
#include "sources/sane/SaneDevice.h"
#include "sources/worker/WorkerClient.h"

#include "tests/sources/sane/SaneTesting.h"

#include <gtest/gtest.h>

#include <fstream>

namespace paperline::sources {
namespace {

class PnmBackend : public testing::Test {
protected:
    // A file of 37 by 23 pixels that repeats nowhere; "P5" grey, "P6" colour.
    std::string picture(const std::string& kind) {
        std::string text = kind + "\n37 23\n255\n";
        const size_t samples = 37 * 23 * (kind == "P6" ? 3 : 1);
        for (size_t i = 0; i < samples; ++i) {
            expected.push_back(static_cast<uint8_t>(i * 7 + i / 256));
            text += static_cast<char>(expected.back());
        }
        const std::string path = configuration.folder() + "/picture" + kind;
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    KeptPage pageOfWorker(const OptionValues& options) {
        WorkerClient client({SANE_WORKER, "pnm:0", ""});
        EXPECT_EQ(client.open(), ScanStatus::good) << client.errorText();
        for (const auto& [name, value] : options)
            EXPECT_EQ(client.setOption(name, value), ScanStatus::good) << client.errorText();
        EXPECT_EQ(client.start(), ScanStatus::good);
        KeptPage page;
        EXPECT_EQ(client.nextPage(page.format), ScanStatus::good) << client.errorText();
        page.bytes.assign(client.pixels().begin(), client.pixels().end());
        EXPECT_EQ(client.nextPage(page.format), ScanStatus::noMorePages);
        return page;
    }

    SaneConfiguration configuration{"pnm"};
    std::vector<uint8_t> expected;
};

TEST_F(PnmBackend, GreyAndColourPicturesComeUnchanged) {
    for (const char* kind : {"P5", "P6"}) {
        expected.clear();
        const std::string path = picture(kind);
        const KeptPage page = pageOfWorker({{"filename", path}});
        EXPECT_EQ(page.format.widthPixels, 37);
        EXPECT_EQ(page.format.heightPixels, 23);
        EXPECT_EQ(page.format.bitsPerPixel, kind[1] == '5' ? 8 : 24);
        EXPECT_EQ(page.bytes, expected);
        const auto reference = scanimagePages("pnm:0", {{"filename", path}});
        ASSERT_EQ(reference.size(), 1u);
        EXPECT_EQ(difference(page, reference[0]), "alike");
    }
}

TEST_F(PnmBackend, ThreeFramesAndUnknownHeightGiveTheSamePicture) {
    const std::string path = picture("P6");
    EXPECT_EQ(pageOfWorker({{"filename", path}, {"three-pass", "yes"}}).bytes, expected);
    EXPECT_EQ(pageOfWorker({{"filename", path}, {"hand-scanner", "yes"}}).bytes, expected);
    EXPECT_EQ(
        pageOfWorker({{"filename", path}, {"three-pass", "yes"}, {"hand-scanner", "yes"}}).bytes,
        expected);
}

TEST_F(PnmBackend, ARefusedOptionIsToldWithItsReason) {
    WorkerClient client({SANE_WORKER, "pnm:0", ""});
    ASSERT_EQ(client.open(), ScanStatus::good);
    EXPECT_EQ(client.setOption("brightness", "101"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "It takes values from -100 to 100.");
    EXPECT_EQ(client.setOption("brightness", "bright"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "It takes a number.");
    EXPECT_EQ(client.setOption("grayify", "perhaps"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "It takes yes or no.");
    EXPECT_EQ(client.setOption("resolution", "77"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "It is not one of the values that the scanner offers.");
    EXPECT_EQ(client.setOption("read-only", "1"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "It can only be set at the scanner itself.");
    EXPECT_EQ(client.setOption("gamma-table", "1"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "It is not available with the present settings.");
    EXPECT_EQ(client.setOption("no-such", "1"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "There is no such option.");
    EXPECT_EQ(client.setOption("filename", std::string(5000, 'x')), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "It is too long.");
    EXPECT_EQ(client.setOption("custom-gamma", "yes"), ScanStatus::good);
    EXPECT_EQ(client.setOption("red-gamma-table", "1,2,3"), ScanStatus::invalid);
    EXPECT_EQ(client.errorText(), "It takes 256 values.");
    EXPECT_EQ(client.setOption("red-gamma-table", "1"), ScanStatus::good);
    EXPECT_EQ(client.setOption("default-enhancements", ""), ScanStatus::good) << "a button";
}

} // namespace
} // namespace paperline::sources
