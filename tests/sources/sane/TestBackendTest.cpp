// SANE's test backend through the device, and through a worker process and its client: the pictures
// are those that scanimage makes of the same options.
#include "sources/sane/LibsaneScanner.h"
#include "sources/sane/SaneDevice.h"
#include "sources/worker/WorkerClient.h"

#include "tests/sources/sane/SaneTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include <dlfcn.h>
#include <pthread.h>

namespace paperline::sources {
namespace {

struct Case {
    const char* name;
    OptionValues options;
};

void PrintTo(const Case& entry, std::ostream* out) {
    *out << entry.name;
}

// A small sheet that starts away from the corner.
OptionValues onSmallSheet(OptionValues options) {
    options.push_back({"resolution", "100"});
    // The simulated hand scanner has an area of its own.
    if (std::find(options.begin(),
                  options.end(),
                  std::pair<std::string, std::string>{"hand-scanner", "yes"}) != options.end())
        return options;
    const OptionValues sheet{{"tl-x", "3"}, {"tl-y", "2"}, {"br-x", "44"}, {"br-y", "33"}};
    options.insert(options.end(), sheet.begin(), sheet.end());
    return options;
}

std::vector<KeptPage> pagesOfDevice(const OptionValues& options) {
    SaneDevice device("test:0", makeLibsaneScanner());
    KeepingSink sink;
    if (device.open() != ScanStatus::good)
        return {};
    keepDriversLoaded();
    for (const auto& [name, value] : options)
        EXPECT_EQ(device.setOption(name, value), ScanStatus::good) << name << device.errorText();
    EXPECT_EQ(device.start(), ScanStatus::good);
    while (device.readPage(sink) == ScanStatus::good) {
    }
    device.stop();
    return sink.pages;
}

std::vector<KeptPage> pagesOfWorker(const OptionValues& options) {
    WorkerClient client({SANE_WORKER, "test:0", ""});
    if (client.open() != ScanStatus::good)
        return {};
    for (const auto& [name, value] : options)
        EXPECT_EQ(client.setOption(name, value), ScanStatus::good) << name << client.errorText();
    EXPECT_EQ(client.start(), ScanStatus::good);
    std::vector<KeptPage> pages;
    PageFormat format;
    while (client.nextPage(format) == ScanStatus::good)
        pages.push_back({format, {client.pixels().begin(), client.pixels().end()}});
    return pages;
}

// Has no more room after some blocks.
class FullSink final : public PageSink {
public:
    explicit FullSink(int blocks) : blocks_(blocks) {}
    bool begin(const PageFormat& format) override { return kept_.begin(format); }
    std::span<uint8_t> rows(int32_t first, int32_t count) override {
        if (blocks_-- <= 0)
            return {};
        return kept_.rows(first, count);
    }
    void finish(int32_t heightPixels) override { kept_.finish(heightPixels); }

private:
    KeepingSink kept_;
    int blocks_;
};

// libsane looks for its configuration once in a process, so that all tests share one.
void configureSane() {
    static const SaneConfiguration configuration("test", testBackendLines);
}

class TestBackend : public testing::TestWithParam<Case> {
protected:
    void SetUp() override { configureSane(); }
};

TEST_P(TestBackend, GivesThePictureThatScanimageGives) {
    const OptionValues options = onSmallSheet(GetParam().options);
    const std::vector<KeptPage> expected = scanimagePages("test:0", options);
    ASSERT_EQ(expected.size(), 1u);
    for (const auto& pages : {pagesOfDevice(options), pagesOfWorker(options)}) {
        ASSERT_EQ(pages.size(), 1u);
        EXPECT_EQ(difference(pages[0], expected[0]), "alike");
    }
}

std::vector<Case> everyModeDepthAndPicture() {
    return {
        {"GrayBlack", {{"mode", "Gray"}, {"test-picture", "Solid black"}}},
        {"GrayWhite", {{"mode", "Gray"}, {"test-picture", "Solid white"}}},
        {"GrayPattern", {{"mode", "Gray"}, {"test-picture", "Color pattern"}}},
        {"GrayGrid", {{"mode", "Gray"}, {"test-picture", "Grid"}}},
        {"LineartBlack", {{"mode", "Gray"}, {"depth", "1"}, {"test-picture", "Solid black"}}},
        {"LineartWhite", {{"mode", "Gray"}, {"depth", "1"}, {"test-picture", "Solid white"}}},
        {"LineartPattern", {{"mode", "Gray"}, {"depth", "1"}, {"test-picture", "Color pattern"}}},
        {"LineartGrid", {{"mode", "Gray"}, {"depth", "1"}, {"test-picture", "Grid"}}},
        {"DeepGrayBlack", {{"mode", "Gray"}, {"depth", "16"}, {"test-picture", "Solid black"}}},
        {"DeepGrayWhite", {{"mode", "Gray"}, {"depth", "16"}, {"test-picture", "Solid white"}}},
        {"DeepGrayPattern", {{"mode", "Gray"}, {"depth", "16"}, {"test-picture", "Color pattern"}}},
        {"DeepGrayGrid", {{"mode", "Gray"}, {"depth", "16"}, {"test-picture", "Grid"}}},
        {"ColorBlack", {{"mode", "Color"}, {"test-picture", "Solid black"}}},
        {"ColorWhite", {{"mode", "Color"}, {"test-picture", "Solid white"}}},
        {"ColorPattern", {{"mode", "Color"}, {"test-picture", "Color pattern"}}},
        {"ColorGrid", {{"mode", "Color"}, {"test-picture", "Grid"}}},
        {"DeepColorBlack", {{"mode", "Color"}, {"depth", "16"}, {"test-picture", "Solid black"}}},
        {"DeepColorWhite", {{"mode", "Color"}, {"depth", "16"}, {"test-picture", "Solid white"}}},
        {"DeepColorPattern",
         {{"mode", "Color"}, {"depth", "16"}, {"test-picture", "Color pattern"}}},
        {"DeepColorGrid", {{"mode", "Color"}, {"depth", "16"}, {"test-picture", "Grid"}}},
    };
}

OptionValues pattern(const char* mode, const char* depth, OptionValues more) {
    OptionValues options{{"mode", mode}, {"depth", depth}, {"test-picture", "Color pattern"}};
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

std::vector<Case> everyOddity() {
    return {
        {"HandGray", pattern("Gray", "8", {{"hand-scanner", "yes"}})},
        {"HandLineart", pattern("Gray", "1", {{"hand-scanner", "yes"}})},
        {"HandColor", pattern("Color", "8", {{"hand-scanner", "yes"}})},
        {"HandDeepColor", pattern("Color", "16", {{"hand-scanner", "yes"}})},
        {"HandThreePass", pattern("Color", "8", {{"hand-scanner", "yes"}, {"three-pass", "yes"}})},
        {"ThreePassRGB",
         pattern("Color", "8", {{"three-pass", "yes"}, {"three-pass-order", "RGB"}})},
        {"ThreePassRBG",
         pattern("Color", "8", {{"three-pass", "yes"}, {"three-pass-order", "RBG"}})},
        {"ThreePassGBR",
         pattern("Color", "8", {{"three-pass", "yes"}, {"three-pass-order", "GBR"}})},
        {"ThreePassGRB",
         pattern("Color", "8", {{"three-pass", "yes"}, {"three-pass-order", "GRB"}})},
        {"ThreePassBRG",
         pattern("Color", "8", {{"three-pass", "yes"}, {"three-pass-order", "BRG"}})},
        {"ThreePassBGR",
         pattern("Color", "8", {{"three-pass", "yes"}, {"three-pass-order", "BGR"}})},
        {"PaddedLineart", pattern("Gray", "1", {{"ppl-loss", "7"}})},
        {"PaddedGray", pattern("Gray", "8", {{"ppl-loss", "7"}})},
        {"PaddedColor", pattern("Color", "8", {{"ppl-loss", "7"}})},
        {"PaddedDeepColor", pattern("Color", "16", {{"ppl-loss", "128"}})},
        {"PaddedThreePass", pattern("Color", "8", {{"ppl-loss", "1"}, {"three-pass", "yes"}})},
        {"FuzzyGray", pattern("Gray", "8", {{"fuzzy-parameters", "yes"}})},
        {"FuzzyColor", pattern("Color", "8", {{"fuzzy-parameters", "yes"}})},
        {"OneByteReads", pattern("Color", "8", {{"read-limit", "yes"}, {"read-limit-size", "1"}})},
        {"OddReadsOfDeepColor",
         pattern("Color", "16", {{"read-limit", "yes"}, {"read-limit-size", "997"}})},
        {"OddReadsOfPaddedLines",
         pattern(
             "Gray", "1", {{"ppl-loss", "3"}, {"read-limit", "yes"}, {"read-limit-size", "5"}})},
        {"DelayedReads",
         pattern("Gray", "8", {{"read-delay", "yes"}, {"read-delay-duration", "20000"}})},
        {"NonBlocking",
         pattern(
             "Color",
             "8",
             {{"non-blocking", "yes"}, {"read-delay", "yes"}, {"read-delay-duration", "20000"}})},
        {"SelectDescriptor",
         pattern(
             "Color", "8", {{"non-blocking", "yes"}, {"select-fd", "yes"}, {"read-delay", "yes"}})},
    };
}

std::string caseName(const testing::TestParamInfo<Case>& information) {
    return information.param.name;
}

INSTANTIATE_TEST_SUITE_P(Pictures,
                         TestBackend,
                         testing::ValuesIn(everyModeDepthAndPicture()),
                         caseName);
INSTANTIATE_TEST_SUITE_P(Oddities, TestBackend, testing::ValuesIn(everyOddity()), caseName);

class TestBackendPages : public testing::Test {
protected:
    void SetUp() override { configureSane(); }
};

// scanimage gives up on colour of one bit, but a grid is black and white in every depth.
TEST_F(TestBackendPages, OneBitColourBecomesFullOrNoIntensity) {
    OptionValues options = onSmallSheet({{"mode", "Color"}, {"test-picture", "Grid"}});
    const std::vector<KeptPage> expected = scanimagePages("test:0", options);
    ASSERT_EQ(expected.size(), 1u);
    options.push_back({"depth", "1"});
    const std::vector<KeptPage> pages = pagesOfDevice(options);
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_EQ(difference(pages[0], expected[0]), "alike");
}

// Nor does scanimage know deep colour in three passes; it is the picture of one pass.
TEST_F(TestBackendPages, DeepColourInThreePassesIsThatOfOne) {
    OptionValues options = onSmallSheet(pattern("Color", "16", {}));
    const std::vector<KeptPage> expected = scanimagePages("test:0", options);
    ASSERT_EQ(expected.size(), 1u);
    options.push_back({"three-pass", "yes"});
    const std::vector<KeptPage> pages = pagesOfDevice(options);
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_EQ(difference(pages[0], expected[0]), "alike");
}

TEST_F(TestBackendPages, TheFeederGivesItsTenPagesInOrder) {
    const OptionValues options = onSmallSheet(
        {{"mode", "Gray"}, {"source", "Automatic Document Feeder"}, {"test-picture", "Grid"}});
    const std::vector<KeptPage> expected = scanimagePages("test:0", options, true);
    ASSERT_EQ(expected.size(), 10u);
    for (const auto& pages : {pagesOfDevice(options), pagesOfWorker(options)}) {
        ASSERT_EQ(pages.size(), 10u);
        for (size_t i = 0; i < pages.size(); ++i)
            EXPECT_EQ(difference(pages[i], expected[i]), "alike") << "page " << i;
    }
}

TEST_F(TestBackendPages, WithoutAWordItIsAllOfTheAreaInColourAt300) {
    SaneDevice device("test:0", makeLibsaneScanner());
    ASSERT_EQ(device.open(), ScanStatus::good);
    keepDriversLoaded();
    ASSERT_EQ(device.start(), ScanStatus::good);
    KeepingSink sink;
    ASSERT_EQ(device.readPage(sink), ScanStatus::good);
    EXPECT_EQ(device.readPage(sink), ScanStatus::noMorePages);
    device.stop();
    ASSERT_EQ(sink.pages.size(), 1u);
    const PageFormat& format = sink.pages[0].format;
    EXPECT_EQ(format.bitsPerPixel, 24);
    EXPECT_EQ(format.widthPixels, 3543); // 300 mm
    EXPECT_EQ(format.heightPixels, 3543);
    EXPECT_EQ(format.horizontalDpi, 300);
    EXPECT_EQ(format.verticalDpi, 300);
}

TEST_F(TestBackendPages, ABatchCanFollowAnother) {
    SaneDevice device("test:0", makeLibsaneScanner());
    ASSERT_EQ(device.open(), ScanStatus::good);
    keepDriversLoaded();
    ASSERT_EQ(device.setOption("resolution", "20"), ScanStatus::good);
    KeepingSink sink;
    for (int batch = 0; batch < 3; ++batch) {
        ASSERT_EQ(device.start(), ScanStatus::good);
        ASSERT_EQ(device.readPage(sink), ScanStatus::good);
        ASSERT_EQ(device.readPage(sink), ScanStatus::noMorePages);
        device.stop();
    }
    EXPECT_EQ(sink.pages.size(), 3u);
}

// A reader thread that ends inside the allocator is waited for without end.
TEST_F(TestBackendPages, ADriversThreadIsNotCancelledAtAnyInstruction) {
    SaneDevice device("test:0", makeLibsaneScanner());
    using SetCancelType = int (*)(int, int*);
    const auto driversCall =
        reinterpret_cast<SetCancelType>(dlsym(RTLD_DEFAULT, "pthread_setcanceltype"));
    std::thread([driversCall] {
        int type = -1;
        driversCall(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
        EXPECT_EQ(driversCall(PTHREAD_CANCEL_ASYNCHRONOUS, &type), 0);
        EXPECT_EQ(type, PTHREAD_CANCEL_DEFERRED);
    }).join();
}

TEST_F(TestBackendPages, ABatchCanBeStoppedAtAnyMoment) {
    SaneDevice device("test:0", makeLibsaneScanner());
    ASSERT_EQ(device.open(), ScanStatus::good);
    keepDriversLoaded();
    for (int batch = 0; batch < 20; ++batch) {
        ASSERT_EQ(device.start(), ScanStatus::good);
        FullSink sink(batch);
        EXPECT_EQ(device.readPage(sink), ScanStatus::noMemory);
        device.stop();
    }
}

TEST_F(TestBackendPages, ADeviceThatIsNotThereIsNamed) {
    SaneDevice device("test:7", makeLibsaneScanner());
    EXPECT_EQ(device.open(), ScanStatus::noSuchDevice);
    EXPECT_EQ(device.errorText(), "There is no scanner \"test:7\".");
}

struct StatusCase {
    const char* value;
    ScanStatus status;
    const char* text;
};

void PrintTo(const StatusCase& entry, std::ostream* out) {
    *out << entry.value;
}

class ReadStatus : public testing::TestWithParam<StatusCase> {
protected:
    void SetUp() override { configureSane(); }
};

TEST_P(ReadStatus, ReachesTheDataSourceWithItsText) {
    WorkerClient client({SANE_WORKER, "test:0", ""});
    ASSERT_EQ(client.open(), ScanStatus::good);
    for (const char* source : {"Flatbed", "Automatic Document Feeder"}) {
        ASSERT_EQ(client.setOption("source", source), ScanStatus::good);
        ASSERT_EQ(client.setOption("read-return-value", GetParam().value), ScanStatus::good);
        ASSERT_EQ(client.start(), ScanStatus::good);
        PageFormat format;
        EXPECT_EQ(client.nextPage(format), GetParam().status);
        EXPECT_EQ(client.errorText(), GetParam().text);
        client.stop();
        // The device is well again afterwards.
        ASSERT_EQ(client.setOption("read-return-value", "Default"), ScanStatus::good);
        ASSERT_EQ(client.start(), ScanStatus::good);
        EXPECT_EQ(client.nextPage(format), ScanStatus::good);
        client.stop();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Every,
    ReadStatus,
    testing::Values(
        StatusCase{"SANE_STATUS_UNSUPPORTED",
                   ScanStatus::unsupported,
                   "The scanner does not support this."},
        StatusCase{"SANE_STATUS_CANCELLED", ScanStatus::cancelled, "The scan was cancelled."},
        StatusCase{"SANE_STATUS_DEVICE_BUSY", ScanStatus::deviceBusy, "The scanner is busy."},
        StatusCase{"SANE_STATUS_INVAL", ScanStatus::invalid, "The scanner refused a setting."},
        StatusCase{"SANE_STATUS_EOF", ScanStatus::ioError, "The scanner sent an empty page."},
        StatusCase{
            "SANE_STATUS_JAMMED", ScanStatus::paperJam, "Paper is jammed in the document feeder."},
        StatusCase{"SANE_STATUS_NO_DOCS", ScanStatus::noMorePages, "The document feeder is empty."},
        StatusCase{"SANE_STATUS_COVER_OPEN", ScanStatus::coverOpen, "The scanner's cover is open."},
        StatusCase{
            "SANE_STATUS_IO_ERROR", ScanStatus::ioError, "The connection to the scanner failed."},
        StatusCase{
            "SANE_STATUS_NO_MEM", ScanStatus::noMemory, "There is not enough memory for the scan."},
        StatusCase{"SANE_STATUS_ACCESS_DENIED",
                   ScanStatus::accessDenied,
                   "Access to the scanner is denied."}),
    [](const testing::TestParamInfo<StatusCase>& information) {
        return std::string(information.param.value);
    });

} // namespace
} // namespace paperline::sources
