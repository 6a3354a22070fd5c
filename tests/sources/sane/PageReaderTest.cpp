// Scanners that no test backend plays: broken frames, short and long ones, colours that do not
// come.
#include "sources/sane/PageReader.h"
#include "sources/sane/SaneDevice.h"

#include "tests/sources/sane/SaneTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <thread>

namespace paperline::sources {
namespace {

struct ScriptedFrame {
    SaneParameters parameters;
    std::vector<uint8_t> data;
    ScanStatus end = ScanStatus::good; // after the data; good is the frame's proper end
    ScanStatus startStatus = ScanStatus::good;
};

class ScriptedScanner final : public SaneScanner {
public:
    ScanStatus open(const std::string&) override { return ScanStatus::good; }
    std::vector<OptionDescriptor> options() override { return {source}; }
    ScanStatus setOption(const std::string&, const std::string&) override {
        return ScanStatus::good;
    }
    ScanStatus start() override {
        if (next >= frames.size())
            return ScanStatus::noMorePages;
        place = 0;
        return frames[next++].startStatus;
    }
    std::optional<SaneParameters> parameters() override { return frames[next - 1].parameters; }
    SaneRead read(std::span<uint8_t> room) override {
        const ScriptedFrame& frame = frames[next - 1];
        if (neverEnds)
            return {ScanStatus::good, false, 0};
        const size_t count = std::min({room.size(), frame.data.size() - place, chunk});
        if (count == 0)
            return {frame.end, frame.end == ScanStatus::good, 0};
        std::copy_n(frame.data.begin() + static_cast<ptrdiff_t>(place), count, room.begin());
        place += count;
        return {ScanStatus::good, false, count};
    }
    void waitForData() override { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }
    void cancel() override { ++cancels; }
    std::string errorText() const override { return "scripted"; }

    std::vector<ScriptedFrame> frames;
    OptionDescriptor source;
    size_t chunk = 3;
    size_t next = 0, place = 0;
    std::atomic<bool> neverEnds{false};
    std::atomic<int> cancels{0};
};

SaneParameters parametersOf(SaneFrame frame, int32_t pixels, int32_t lines, bool last = true) {
    SaneParameters parameters;
    parameters.frame = frame;
    parameters.lastFrame = last;
    parameters.pixelsPerLine = pixels;
    parameters.bytesPerLine = frame == SaneFrame::rgb ? 3 * pixels : pixels;
    parameters.lines = lines;
    return parameters;
}

class PageReaderTest : public testing::Test {
protected:
    ScanStatus read() { return reader.read(sink, 300, 150); }
    void add(const SaneParameters& parameters,
             std::vector<uint8_t> data,
             ScanStatus end = ScanStatus::good) {
        scanner.frames.push_back({parameters, std::move(data), end, ScanStatus::good});
    }
    ScriptedScanner scanner;
    std::atomic<bool> cancelled{false};
    PageReader reader{scanner, cancelled};
    KeepingSink sink;
};

TEST_F(PageReaderTest, AShortPageHasTheRowsThatCame) {
    add(parametersOf(SaneFrame::gray, 2, 5), {1, 2, 3, 4, 5});
    EXPECT_EQ(read(), ScanStatus::good);
    EXPECT_EQ(sink.pages.at(0).format.heightPixels, 2);
    EXPECT_EQ(sink.pages.at(0).bytes, (std::vector<uint8_t>{1, 2, 3, 4}));
}

TEST_F(PageReaderTest, RowsPastTheAnnouncedHeightAreDropped) {
    add(parametersOf(SaneFrame::gray, 2, 1), {1, 2, 3, 4, 5, 6, 7, 8});
    SaneParameters padded = parametersOf(SaneFrame::gray, 2, 1);
    padded.bytesPerLine = 3;
    add(padded, {1, 2, 9, 3, 4, 9, 5, 6, 9});
    for (size_t page = 0; page < 2; ++page) {
        EXPECT_EQ(read(), ScanStatus::good);
        EXPECT_EQ(sink.pages.at(page).bytes, (std::vector<uint8_t>{1, 2}));
    }
}

TEST_F(PageReaderTest, APageOfUnknownHeightHasItsRowsCounted) {
    add(parametersOf(SaneFrame::rgb, 1, -1), {1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(read(), ScanStatus::good);
    EXPECT_EQ(sink.pages.at(0).format.heightPixels, 3);
    EXPECT_EQ(sink.pages.at(0).format.horizontalDpi, 300);
    EXPECT_EQ(sink.pages.at(0).format.verticalDpi, 150);
}

TEST_F(PageReaderTest, ColourFramesOfUnequalHeightGiveTheShortestPage) {
    add(parametersOf(SaneFrame::blue, 1, -1, false), {31, 32, 33});
    add(parametersOf(SaneFrame::red, 1, -1, false), {11, 12});
    add(parametersOf(SaneFrame::green, 1, -1, true), {21, 22, 23});
    EXPECT_EQ(read(), ScanStatus::good);
    EXPECT_EQ(sink.pages.at(0).bytes, (std::vector<uint8_t>{11, 21, 31, 12, 22, 32}));
}

TEST_F(PageReaderTest, EveryColourMustComeOnce) {
    add(parametersOf(SaneFrame::red, 1, 1, false), {1});
    add(parametersOf(SaneFrame::red, 1, 1, false), {1});
    EXPECT_EQ(read(), ScanStatus::ioError);
    scanner.frames.clear();
    scanner.next = 0;
    add(parametersOf(SaneFrame::red, 1, 1, false), {1});
    add(parametersOf(SaneFrame::green, 1, 1, true), {1});
    EXPECT_EQ(read(), ScanStatus::ioError);
    scanner.frames.clear();
    scanner.next = 0;
    add(parametersOf(SaneFrame::red, 1, 1, false), {1});
    add(parametersOf(SaneFrame::green, 2, 1, true), {1, 1});
    EXPECT_EQ(read(), ScanStatus::ioError);
    scanner.frames.clear();
    scanner.next = 0;
    add(parametersOf(SaneFrame::red, 1, 1, false), {1});
    EXPECT_EQ(read(), ScanStatus::ioError) << "the feeder is empty after a first colour";
    EXPECT_TRUE(sink.pages.empty());
}

TEST_F(PageReaderTest, ImpossibleSizesAreRefused) {
    std::vector<SaneParameters> wrong(6, parametersOf(SaneFrame::gray, 4, 4));
    wrong[0].pixelsPerLine = 0;
    wrong[1].pixelsPerLine = -5;
    wrong[2].bytesPerLine = 3;
    wrong[3].lines = 0;
    wrong[4].bytesPerLine = INT32_MAX;
    wrong[5].pixelsPerLine = INT32_MAX;
    for (const SaneParameters& parameters : wrong) {
        add(parameters, {1, 2, 3, 4});
        EXPECT_EQ(read(), ScanStatus::ioError);
    }
    SaneParameters unknown = parametersOf(SaneFrame::other, 4, 4);
    add(unknown, {});
    EXPECT_EQ(read(), ScanStatus::unsupported);
    EXPECT_TRUE(sink.pages.empty());
}

TEST_F(PageReaderTest, AnEmptyFrameIsNoPage) {
    add(parametersOf(SaneFrame::gray, 2, 2), {});
    EXPECT_EQ(read(), ScanStatus::ioError);
    EXPECT_EQ(reader.errorText(), "The scanner sent an empty page.");
}

TEST_F(PageReaderTest, PaperThatEndsInAPageIsAFailureAndBeforeItTheEnd) {
    add(parametersOf(SaneFrame::gray, 2, 2), {1}, ScanStatus::noMorePages);
    EXPECT_EQ(read(), ScanStatus::ioError);
    EXPECT_EQ(reader.errorText(), "The document feeder ran empty in the middle of a page.");
    add(parametersOf(SaneFrame::gray, 2, 2), {}, ScanStatus::noMorePages);
    EXPECT_EQ(read(), ScanStatus::noMorePages);
    EXPECT_TRUE(sink.pages.empty());
}

TEST_F(PageReaderTest, AFailureHalfWayGivesNoPage) {
    add(parametersOf(SaneFrame::gray, 2, 2), {1, 2}, ScanStatus::paperJam);
    EXPECT_EQ(read(), ScanStatus::paperJam);
    EXPECT_EQ(reader.errorText(), "scripted");
    EXPECT_TRUE(sink.pages.empty());
}

// A device around the scripted scanner.
class SaneDeviceTest : public testing::Test {
protected:
    void SetUp() override {
        auto owned = std::make_unique<ScriptedScanner>();
        scanner = owned.get();
        device = std::make_unique<SaneDevice>("scripted", std::move(owned));
    }
    ScriptedScanner* scanner = nullptr;
    std::unique_ptr<SaneDevice> device;
    KeepingSink sink;
};

TEST_F(SaneDeviceTest, AFeederKeepsItsPagesWhenTheThirdJams) {
    scanner->source.name = "source";
    scanner->source.value = "ADF";
    for (uint8_t page = 1; page <= 2; ++page)
        scanner->frames.push_back(
            {parametersOf(SaneFrame::gray, 1, 1), {page}, ScanStatus::good, ScanStatus::good});
    scanner->frames.push_back(
        {parametersOf(SaneFrame::gray, 1, 1), {}, ScanStatus::good, ScanStatus::paperJam});
    ASSERT_EQ(device->start(), ScanStatus::good);
    EXPECT_EQ(device->readPage(sink), ScanStatus::good);
    EXPECT_EQ(device->readPage(sink), ScanStatus::good);
    EXPECT_EQ(device->readPage(sink), ScanStatus::paperJam);
    EXPECT_EQ(sink.pages.size(), 2u);
    EXPECT_EQ(scanner->cancels, 0);
    device->stop();
    EXPECT_EQ(scanner->cancels, 1);
}

TEST_F(SaneDeviceTest, AnEmptyFeederSaysSoAtTheFirstPageOnly) {
    scanner->source.name = "source";
    scanner->source.value = "ADF";
    ASSERT_EQ(device->start(), ScanStatus::good);
    EXPECT_EQ(device->readPage(sink), ScanStatus::noMorePages);
    EXPECT_EQ(device->errorText(), "scripted");
    scanner->frames.push_back(
        {parametersOf(SaneFrame::gray, 1, 1), {1}, ScanStatus::good, ScanStatus::good});
    ASSERT_EQ(device->start(), ScanStatus::good);
    EXPECT_EQ(device->readPage(sink), ScanStatus::good);
    EXPECT_EQ(device->readPage(sink), ScanStatus::noMorePages);
    EXPECT_EQ(device->errorText(), "");
}

TEST_F(SaneDeviceTest, CancelEndsAPageThatNeverComes) {
    scanner->neverEnds = true;
    scanner->frames.push_back(
        {parametersOf(SaneFrame::gray, 1, 1), {1}, ScanStatus::good, ScanStatus::good});
    ASSERT_EQ(device->start(), ScanStatus::good);
    std::thread canceller([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        device->cancel();
    });
    EXPECT_EQ(device->readPage(sink), ScanStatus::cancelled);
    canceller.join();
    EXPECT_EQ(scanner->cancels, 0) << "the scanner is told by stop, in the device's own thread";
}

} // namespace
} // namespace paperline::sources
