#include "base/CvOutputLog.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <thread>

using namespace paperline;

namespace {

// A root folder of the test's own with /tmp/DrvLog in it; the clock stands at 14:03:27.512 local
// time.
class CvOutputLogTest : public testing::Test {
protected:
    CvOutputLogTest() {
        setenv("TZ", "UTC", 1);
        tzset();
        setenv("PAPERLINE_ROOT", root_.c_str(), 1);
        EXPECT_TRUE(createFolderWithParents(folder_));
        host().secondsSinceEpoch = [] { return 1'768'572'207.512; };
    }
    ~CvOutputLogTest() override {
        unsetenv("PAPERLINE_ROOT");
        host() = realHost();
    }

    void switchOn(const std::string& text) { std::ofstream(folder_ + "/Debug.conf") << text; }
    std::vector<uint8_t> logBytes() const {
        return readFile(folder_ + "/CorvanePaperlineLog.txt").value_or(std::vector<uint8_t>());
    }
    // The log without its marks; every line starts with one.
    std::vector<std::string> logLines() const {
        const std::vector<uint8_t> bytes = logBytes();
        std::vector<std::string> lines;
        for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
            if (bytes[i] == 0xff && bytes[i + 1] == 0xfe)
                lines.emplace_back();
            else if (bytes[i] != '\n' && !lines.empty())
                lines.back() += static_cast<char>(bytes[i]);
        }
        return lines;
    }

    const testing_support::TestFolder testFolder_;
    const std::string& root_ = testFolder_.path();
    std::string folder_ = root_ + "/tmp/DrvLog";
    CvOutputLog log_;
};

} // namespace

TEST_F(CvOutputLogTest, IsOffWithoutASwitchFile) {
    log_.setDebugLevelAndCreateLogFile();
    log_.outputDebugLog("init", "In ", 1, int64_t{-1}, 0);
    EXPECT_EQ(log_.debugLevel, 0);
    EXPECT_TRUE(log_.logPath.empty());
    EXPECT_TRUE(logBytes().empty());
}

TEST_F(CvOutputLogTest, SetsItsPathsFromTheSwitchFile) {
    switchOn("DebugLevel 2\n");
    log_.setDebugLevelAndCreateLogFile();
    EXPECT_EQ(log_.debugLevel, 2);
    EXPECT_EQ(log_.logPath, folder_ + "/CorvanePaperlineLog.txt");
    EXPECT_EQ(log_.logDir, folder_);
    EXPECT_EQ(log_.debugFile, folder_ + "/Debug.conf");
}

TEST_F(CvOutputLogTest, TakesTheLastLevelAndKeepsToTheLetterCase) {
    switchOn("DebugLevel 1\nOther 9\nDebugLevel 3\n");
    log_.setDebugLevelAndCreateLogFile();
    EXPECT_EQ(log_.debugLevel, 3);
    switchOn("debuglevel 2\n");
    log_.setDebugLevelAndCreateLogFile();
    EXPECT_EQ(log_.debugLevel, 0);
    switchOn("DebugLevel two\n");
    log_.setDebugLevelAndCreateLogFile();
    EXPECT_EQ(log_.debugLevel, 0);
    switchOn("DebugLevel 2x\n");
    log_.setDebugLevelAndCreateLogFile();
    EXPECT_EQ(log_.debugLevel, 2);
}

TEST_F(CvOutputLogTest, SplitsLinesAtBlanksAndReadsLongOnesInPieces) {
    const auto levelOf = [this](const std::string& text) {
        switchOn(text);
        log_.setDebugLevelAndCreateLogFile();
        return log_.debugLevel;
    };
    EXPECT_EQ(levelOf("  DebugLevel \t 3 and more\r\n"), 3);
    EXPECT_EQ(levelOf("DebugLevel 2"), 2); // no line feed
    EXPECT_EQ(levelOf("\n\nDebugLevel 1\n\n"), 1);
    EXPECT_EQ(levelOf("DebugLevel\n"), 0);
    EXPECT_EQ(levelOf("DebugLevelX 4\n"), 0);
    EXPECT_EQ(levelOf(std::string(2000, 'x') + " 9\nDebugLevel 2\n"), 2);
    EXPECT_EQ(levelOf(std::string(1023, ' ') + "DebugLevel 2\n"), 2); // the second read
    EXPECT_EQ(levelOf(std::string(1000, ' ') + "DebugLevel 2\n"), 2);
    EXPECT_EQ(levelOf(std::string(1018, ' ') + "DebugLevel 2\n"), 0); // torn into two words
}

TEST_F(CvOutputLogTest, NeverWritesAtANegativeLevel) {
    switchOn("DebugLevel -1\n");
    log_.setDebugLevelAndCreateLogFile();
    EXPECT_TRUE(log_.logPath.empty());
    log_.outputDebugLog("init", "In ", 1, int64_t{-1}, 0);
    EXPECT_TRUE(logBytes().empty());
}

TEST_F(CvOutputLogTest, WritesEachFormOfEntry) {
    switchOn("DebugLevel 1\n");
    log_.setDebugLevelAndCreateLogFile();
    log_.outputDebugLog("toolBarItemFitPage", "In ", 1, int64_t{-1}, 0);
    log_.outputDebugLog("_selectedRaw", "   ", 7, int64_t{-1}, 0);
    log_.outputDebugLog("init", "   ", 1, std::string_view("/a/b"), 1);
    log_.outputDebugLog("count", "   ", 1, int64_t{0}, 0);
    log_.outputDebugLog("subject alone", "", 1, int64_t{-1}, 0);
    log_.outputDebugLog("low half", "   ", 1, int64_t{0x1'ffff'fffe}, 0);
    log_.outputDebugLog("no low half", "   ", 1, int64_t{0xffff'ffff}, 0);
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 8U); // the creating write's mark comes first
    EXPECT_EQ(lines[0], "");
    EXPECT_EQ(lines[1], "14:03:27.512 ==> In  1: toolBarItemFitPage");
    EXPECT_EQ(lines[2], "14:03:27.512 ==>     7: _selectedRaw");
    EXPECT_EQ(lines[3], "14:03:27.512 ==>     1: init : /a/b");
    EXPECT_EQ(lines[4], "14:03:27.512 ==>     1: count : 0");
    EXPECT_EQ(lines[5], "14:03:27.512 ==> subject alone");
    EXPECT_EQ(lines[6], "14:03:27.512 ==>     1: low half : -2");
    EXPECT_EQ(lines[7], "14:03:27.512 ==>     1: no low half");
}

TEST_F(CvOutputLogTest, IsUtf16WithAMarkInFrontOfEveryLine) {
    switchOn("DebugLevel 1\n");
    log_.setDebugLevelAndCreateLogFile();
    log_.outputDebugLog("a", "", 1, int64_t{-1}, 0);
    const std::vector<uint8_t> bytes = logBytes();
    // Created with a mark of its own, then mark, "14:03:27.512 ==> a", line feed.
    const std::vector<uint8_t> start{0xff, 0xfe, 0xff, 0xfe, '1', 0, '4', 0, ':', 0};
    ASSERT_EQ(bytes.size(), 4U + 2 * 19);
    EXPECT_TRUE(std::equal(start.begin(), start.end(), bytes.begin()));
    EXPECT_EQ(bytes[bytes.size() - 2], '\n');
}

TEST_F(CvOutputLogTest, AppendsToAnExistingLog) {
    switchOn("DebugLevel 1\n");
    for (int run = 0; run < 2; ++run) {
        CvOutputLog log;
        log.setDebugLevelAndCreateLogFile();
        log.outputDebugLog("run", "", 1, int64_t{-1}, 0);
    }
    EXPECT_EQ(logLines().size(), 3U);
}

TEST_F(CvOutputLogTest, EchoesToTheConsoleAboveLevelTwoOnly) {
    for (const int level : {2, 3}) {
        switchOn("DebugLevel " + std::to_string(level) + "\n");
        CvOutputLog log;
        log.setDebugLevelAndCreateLogFile();
        testing::internal::CaptureStderr();
        log.outputDebugLog("init", "In ", 1, int64_t{-1}, 0);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), level == 3 ? "In  1: init\n" : "");
    }
}

TEST_F(CvOutputLogTest, DropsEntriesWhenItsFolderIsGone) {
    switchOn("DebugLevel 1\n");
    log_.setDebugLevelAndCreateLogFile();
    removePath(folder_);
    log_.outputDebugLog("init", "In ", 1, int64_t{-1}, 0);
    EXPECT_FALSE(fileExists(folder_));
    EXPECT_FALSE(log_.logWritting);
}

TEST_F(CvOutputLogTest, WritesAfterABoundedWaitEvenWhenBusy) {
    switchOn("DebugLevel 1\n");
    log_.setDebugLevelAndCreateLogFile();
    log_.logWritting = true;
    log_.outputDebugLog("late", "", 1, int64_t{-1}, 0);
    EXPECT_EQ(logLines().size(), 2U);
    EXPECT_FALSE(log_.logWritting);
}

TEST_F(CvOutputLogTest, ObeysNoLinkInTheSharedFolder) {
    const std::string elsewhere = root_ + "/conf";
    std::ofstream(elsewhere) << "DebugLevel 1\n";
    ASSERT_EQ(symlink(elsewhere.c_str(), (folder_ + "/Debug.conf").c_str()), 0);
    log_.setDebugLevelAndCreateLogFile();
    EXPECT_EQ(log_.debugLevel, 0);
}

TEST_F(CvOutputLogTest, WritesThroughNoLinkInTheSharedFolder) {
    switchOn("DebugLevel 1\n");
    const std::string victim = root_ + "/victim";
    std::ofstream(victim) << "precious";
    ASSERT_EQ(symlink(victim.c_str(), (folder_ + "/CorvanePaperlineLog.txt").c_str()), 0);
    log_.setDebugLevelAndCreateLogFile();
    log_.outputDebugLog("init", "In ", 1, int64_t{-1}, 0);
    EXPECT_EQ(readFile(victim)->size(), 8U);
}

TEST_F(CvOutputLogTest, TracesOperationsByScope) {
    switchOn("DebugLevel 1\n");
    log_.setDebugLevelAndCreateLogFile();
    gOutputLog = &log_;
    {
        const TraceScope trace("operation");
        traceValue("row", 3);
        traceText("path", "/x");
    }
    gOutputLog = nullptr;
    const std::vector<std::string> lines = logLines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[1], "14:03:27.512 ==> In  1: operation");
    EXPECT_EQ(lines[2], "14:03:27.512 ==>     3: row");
    EXPECT_EQ(lines[3], "14:03:27.512 ==>     1: path : /x");
    EXPECT_EQ(lines[4], "14:03:27.512 ==> Out 1: operation");
}
