// The trace of a whole run, call for call: start, scan, setup and end, with the calls to the data
// source manager ("DSM ...") between the entries where they are made.
#include "tests/app/LaunchFixture.h"
#include "tests/app/TraceReading.h"

#include "base/CvOutputLog.h"
#include "base/FileFormats.h"
#include "platform/files/Files.h"
#include "platform/places/Places.h"

#include <gmock/gmock.h>

#include <QComboBox>

#include <cstdlib>
#include <filesystem>

namespace paperline::test {
namespace {

constexpr uint32_t talmerickBrand = 2;

class GoldenTraceTest : public LaunchFixture {
protected:
    GoldenTraceTest() {
        gOutputLog = nullptr; // the launch makes it and reads its switch file
        removePath(traceFolder_);
        writeTextFile(traceFolder_ + "/Debug.conf", "DebugLevel 1\n");
        dsm.intercept = [this](const Triplet& triplet, TW_MEMREF) {
            noteCall(triplet);
            return std::optional<uint16_t>();
        };
    }
    ~GoldenTraceTest() override {
        dsm.intercept = nullptr;
        setDsmCallObserver({});
        controller.reset(); // its views trace while they go
        gOutputLog = nullptr;
        removePath(traceFolder_);
    }

    // What was traced and called since the last time.
    std::string takeTrace() {
        const std::vector<std::string> entries = readTrace(traceFile_);
        std::vector<std::string> merged;
        size_t call = 0;
        for (size_t n = 0; n <= entries.size(); ++n) {
            for (; call < calls_.size() && calls_[call].first == n; ++call)
                merged.push_back("DSM " + calls_[call].second);
            if (n < entries.size())
                merged.push_back(entries[n]);
        }
        EXPECT_EQ(call, calls_.size());
        removePath(traceFile_);
        calls_.clear();
        return goldenText(
            merged, {{folder, "{test}"}, {userDataFolder(), "{data}"}, {scratchRoot(), "/tmp"}});
    }
    // From here on calls go to the manager of this build, which finds the software scanner.
    void useRealManager() {
        namespace fs = std::filesystem;
        for (const char* part : {"/Contents/Frameworks", "/Contents/Helpers"})
            fs::create_directory_symlink(std::string(PAPERLINE_TEST_BUNDLE) + part, bundle + part);
        fs::copy(
            PAPERLINE_TEST_SOURCES, folder + "/TWAIN Data Sources", fs::copy_options::recursive);
        setDsmEntry({});
        setDsmCallObserver({.willCall =
                                [this](TW_UINT32 group, TW_UINT16 type, TW_UINT16 message) {
                                    noteCall({group, type, message});
                                },
                            .didCall = {}});
    }
    void scanInFormat(int32_t format) {
        controller->profileFileformatSelect = format;
        takeTrace();
        controller->toolBarItemScan(nullptr);
        EXPECT_TRUE(runUntilScanEnds());
    }
    ScriptedSource& addScanner(std::string_view name, size_t pages) {
        ScriptedSource& source = addSource(name);
        source.pages.assign(pages, goodPage(pageInfo(40, 60, 24, 100), 1, 20));
        return source;
    }

private:
    void noteCall(const Triplet& triplet) { calls_.emplace_back(traceLength(), nameOf(triplet)); }
    size_t traceLength() const { return fileExists(traceFile_) ? readTrace(traceFile_).size() : 0; }
    std::string traceFolder_ = systemPlace("/tmp/DrvLog");
    std::string traceFile_ = traceFolder_ + "/CorvanePaperlineLog.txt";
    std::vector<std::pair<size_t, std::string>> calls_; // entries before it, name
};

TEST_F(GoldenTraceTest, StartWithOneSource) {
    addScanner("Scanner One", 1);
    ASSERT_TRUE(launch());
    expectGolden("start-one-source", takeTrace());
}

TEST_F(GoldenTraceTest, StartWithTwoSourcesAndAChoice) {
    addScanner("Scanner One", 1);
    addScanner("Scanner Two", 1);
    whenAsked([this](AppDelegate& asked) {
        chooseRow(asked, 1);
        asked.doBtnOK(nullptr);
    });
    ASSERT_TRUE(launch(talmerickBrand));
    expectGolden("start-two-sources", takeTrace());
}

TEST_F(GoldenTraceTest, StartWithoutASource) {
    ASSERT_TRUE(launch());
    expectGolden("start-no-source", takeTrace());
}

TEST_F(GoldenTraceTest, ScanToJpeg) {
    addScanner("Scanner One", 2);
    ASSERT_TRUE(launch());
    scanInFormat(formatJpeg);
    expectGolden("scan-jpeg", takeTrace());
}

TEST_F(GoldenTraceTest, ScanToMultiPageTiff) {
    addScanner("Scanner One", 3);
    ASSERT_TRUE(launch());
    scanInFormat(formatMultiPageTiff);
    expectGolden("scan-multi-page-tiff", takeTrace());
}

TEST_F(GoldenTraceTest, ScanToMultiPagePdf) {
    addScanner("Scanner One", 3);
    ASSERT_TRUE(launch());
    scanInFormat(formatMultiPagePdf);
    expectGolden("scan-multi-page-pdf", takeTrace());
}

TEST_F(GoldenTraceTest, ScanToGif) {
    addScanner("Scanner One", 1);
    ASSERT_TRUE(launch());
    scanInFormat(formatGif);
    expectGolden("scan-gif", takeTrace());
}

TEST_F(GoldenTraceTest, ScanToBmpAndToTheListAlone) {
    addScanner("Scanner One", 1);
    ASSERT_TRUE(launch());
    scanInFormat(formatBmp);
    expectGolden("scan-bmp", takeTrace());
    controller->mMenuFileSave = 0;
    scanInFormat(formatBmp);
    expectGolden("scan-not-saved", takeTrace());
}

TEST_F(GoldenTraceTest, ScanThroughTheRealManager) {
    useRealManager();
    setenv("PAPERLINE_SOURCE_OPTIONS", "resolution=50\nmode=Gray\ncount=2", 1);
    ASSERT_TRUE(launch());
    expectGolden("start-real-manager", takeTrace());
    scanInFormat(formatPng);
    expectGolden("scan-real-manager", takeTrace());
    closeAndEnd();
    expectGolden("end-real-manager", takeTrace());
    unsetenv("PAPERLINE_SOURCE_OPTIONS");
}

TEST_F(GoldenTraceTest, SetupAcceptedAndCancelled) {
    ScriptedSource& source = addScanner("Scanner One", 1);
    ASSERT_TRUE(launch());
    for (const auto& [message, name] : {std::pair{twain::MSG_CLOSEDSOK, "setup-accepted"},
                                        std::pair{twain::MSG_CLOSEDSREQ, "setup-cancelled"}}) {
        source.setupAnswer = message;
        takeTrace();
        controller->toolBarItemSetup(nullptr);
        ASSERT_TRUE(runUntilScanEnds());
        expectGolden(name, takeTrace());
    }
}

TEST_F(GoldenTraceTest, End) {
    addScanner("Scanner One", 1);
    ASSERT_TRUE(launch());
    takeTrace();
    closeAndEnd();
    expectGolden("end", takeTrace());
}

} // namespace
} // namespace paperline::test
