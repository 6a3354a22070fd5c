// Every triplet of a session, on the first, the middle and the last page of one and of three, by a
// source that fails, cancels or lies. Whatever it does, the scan ends idle and earlier pages are
// whole.
#include "SessionFixture.h"

#include "platform/files/Files.h"
#include "twain/TWAINHandler.h"

#include <gmock/gmock.h>

#include <array>
#include <functional>

namespace paperline::test {
namespace {

using ::testing::IsEmpty;

struct Lie {
    const char* name;
    std::function<void(ScriptedPage&)> tell;
};

class BrokenSourcesTest : public SessionFixture {
protected:
    static uint8_t seedOf(size_t page) { return static_cast<uint8_t>(10 + page); }
    void connectWithPages(size_t pages) {
        ScriptedSource& source = addSource();
        for (size_t page = 0; page < pages; ++page)
            source.pages.push_back(goodPage(info, seedOf(page), 3));
        connect();
    }
    void expectIdleAfterOneScan() const {
        EXPECT_EQ(controller->mScanSetup, 0);
        EXPECT_TRUE(folderField.isEnabled());
        EXPECT_EQ(controller->currentMultiPage, 1U);
        EXPECT_EQ(scansEnded, 1);
        EXPECT_FALSE(gTWAINHandler->dsOpen);
        EXPECT_FALSE(gTWAINHandler->dsEnabled);
        EXPECT_LE(alerts.size(), 4U);
    }
    void expectWholePagesBefore(size_t page) const {
        for (size_t earlier = 0; earlier < page; ++earlier)
            EXPECT_EQ(readBmp(savedPath(static_cast<int>(earlier) + 1)).bytes,
                      bytesOfGoodPage(info, seedOf(earlier), 3))
                << "page " << earlier + 1;
    }
    // The listed paths are files, and there are no other files.
    void expectListedFilesOnly() const {
        EXPECT_EQ(folderEntries(folder).size(), controller->imageFilePath.size());
        for (const std::string& path : controller->imageFilePath)
            EXPECT_TRUE(fileExists(path)) << path;
    }
    // A scan after the broken one works.
    void expectNextScanWorks() {
        const size_t listed = controller->imageFilePath.size();
        dsm.intercept = nullptr;
        dsm.sources[0].pages = {goodPage(info, 99)};
        dsm.sources[0].endlessPages = false;
        alerts.clear();
        scanAtOnce();
        EXPECT_THAT(alerts, IsEmpty());
        ASSERT_EQ(controller->imageFilePath.size(), listed + 1);
        EXPECT_EQ(readBmp(controller->imageFilePath.back()).bytes, bytesOfGoodPage(info, 99));
    }
    const TW_IMAGEINFO info = pageInfo(10, 9, 8, 300);
};

constexpr std::array<size_t, 3> positions{0, 1, 2};

TEST_F(BrokenSourcesTest, EndIdleWhicheverTripletFails) {
    const std::array<Triplet, 4> triplets{imageInfo, setupMemXfer, imageMemXfer, endXfer};
    const std::array<uint16_t, 7> codes{twain::TWRC_FAILURE,
                                        twain::TWRC_CHECKSTATUS,
                                        twain::TWRC_CANCEL,
                                        twain::TWRC_XFERDONE,
                                        twain::TWRC_ENDOFLIST,
                                        twain::TWRC_SCANNERLOCKED,
                                        0xffff};
    for (size_t pages : {size_t{1}, size_t{3}}) {
        for (size_t page : positions) {
            if (page >= pages)
                continue;
            for (const Triplet& triplet : triplets) {
                for (uint16_t code : codes) {
                    SCOPED_TRACE(nameOf(triplet) + " answers " + std::to_string(code) +
                                 " at page " + std::to_string(page + 1) + " of " +
                                 std::to_string(pages));
                    startOver();
                    connectWithPages(pages);
                    const int occurrence =
                        static_cast<int>(triplet == imageMemXfer ? page * 3 + 1 : page);
                    dsm.fail(triplet, code, occurrence);
                    scanAtOnce();
                    expectIdleAfterOneScan();
                    expectWholePagesBefore(page);
                    expectListedFilesOnly();
                    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
                    expectNextScanWorks();
                }
            }
        }
    }
}

TEST_F(BrokenSourcesTest, EndIdleWhicheverSessionTripletFails) {
    for (const Triplet& triplet : {openDs, enableDs, disableDs, closeDs, resetXfer}) {
        for (uint16_t code : {twain::TWRC_FAILURE, twain::TWRC_CHECKSTATUS, twain::TWRC_CANCEL}) {
            for (size_t pages : {size_t{1}, size_t{3}}) {
                SCOPED_TRACE(nameOf(triplet) + " answers " + std::to_string(code));
                startOver();
                connectWithPages(pages);
                dsm.fail(triplet, code);
                scanAtOnce();
                expectIdleAfterOneScan();
                const bool reachesPages = triplet != openDs && triplet != enableDs;
                expectWholePagesBefore(reachesPages ? pages : 0);
                EXPECT_EQ(controller->imageFilePath.size(), reachesPages ? pages : 0);
            }
        }
    }
}

std::vector<Lie> liesAboutThePage() {
    const auto size = [](int32_t width, int32_t height) {
        return [width, height](ScriptedPage& page) {
            page.info.ImageWidth = width;
            page.info.ImageLength = height;
        };
    };
    const auto depth = [](int16_t samples, int16_t bitsPerSample, int16_t bitsPerPixel) {
        return [=](ScriptedPage& page) {
            page.info.SamplesPerPixel = samples;
            page.info.BitsPerSample[0] = bitsPerSample;
            page.info.BitsPerPixel = bitsPerPixel;
        };
    };
    return {{"no width", size(0, 9)},
            {"no height", size(10, 0)},
            {"negative width", size(-10, 9)},
            {"negative height", size(10, -9)},
            {"smallest numbers", size(INT32_MIN, INT32_MIN)},
            {"gigantic width", size(INT32_MAX, 9)},
            {"gigantic height", size(10, INT32_MAX)},
            {"gigantic page", size(INT32_MAX, INT32_MAX)},
            {"wider than its strips", size(1000, 9)},
            {"taller than its strips", size(10, 1000)},
            {"narrower than its strips", size(3, 9)},
            {"one pixel", size(1, 1)},
            {"2 bits", depth(1, 2, 2)},
            {"4 bits", depth(1, 4, 4)},
            {"16 bits", depth(1, 16, 16)},
            {"32 bits", depth(4, 8, 32)},
            {"48 bits", depth(3, 16, 48)},
            {"colour of one sample", depth(1, 8, 24)},
            {"no bits", depth(1, 0, 0)},
            {"negative bits", depth(-1, -8, -8)},
            {"largest numbers", depth(INT16_MAX, INT16_MAX, INT16_MAX)},
            {"one bit of three samples", depth(3, 1, 1)},
            {"planar", [](ScriptedPage& page) { page.info.Planar = 1; }},
            {"compressed", [](ScriptedPage& page) { page.info.Compression = 5; }},
            {"no resolution",
             [](ScriptedPage& page) {
                 page.info.XResolution = {0, 0};
             }},
            {"negative resolution", [](ScriptedPage& page) {
                 page.info.XResolution = {-32768, 65535};
                 page.info.YResolution = {-1, 1};
             }}};
}

std::vector<Lie> liesAboutStrips() {
    const auto strip = [](std::optional<uint32_t> yOffset,
                          std::optional<uint32_t> rows,
                          std::optional<uint32_t> bytesPerRow) {
        return [=](ScriptedPage& page) {
            page.strips[1].yOffset = yOffset;
            page.strips[1].rows = rows;
            page.strips[1].bytesPerRow = bytesPerRow;
        };
    };
    constexpr uint32_t most = 0xffffffff;
    return {
        {"record left alone", strip({}, {}, {})},
        {"no rows", strip(3, 0, 10)},
        {"rows without end", strip(3, most, 10)},
        {"below the page", strip(9, 3, 10)},
        {"far below the page", strip(most, most, most)},
        {"across the end", strip(8, 3, 10)},
        {"offset and rows that wrap", strip(most - 1, 4, 10)},
        {"short lines", strip(3, 3, 1)},
        {"no lines", strip(3, 3, 0)},
        {"overlong lines", strip(3, 3, 4000)},
        {"lines without end", strip(3, 3, most)},
        {"backwards", strip(0, 3, 10)},
        {"ends early",
         [](ScriptedPage& page) {
             page.strips.resize(1);
             page.strips[0].code = twain::TWRC_XFERDONE;
         }},
        {"never ends", [](ScriptedPage& page) { page.strips.back().code = twain::TWRC_SUCCESS; }},
        {"never a row",
         [](ScriptedPage& page) {
             page.strips.resize(1);
             page.strips[0].rows = 0;
         }},
        {"no strips", [](ScriptedPage& page) { page.strips.clear(); }},
        {"more bytes than the buffer",
         [](ScriptedPage& page) { page.strips[1].bytes.assign(1000, 7); }}};
}

TEST_F(BrokenSourcesTest, KeepEarlierPagesWhateverTheyClaim) {
    std::vector<Lie> lies = liesAboutThePage();
    for (Lie& lie : liesAboutStrips())
        lies.push_back(std::move(lie));
    for (size_t pages : {size_t{1}, size_t{3}}) {
        for (size_t page : positions) {
            if (page >= pages)
                continue;
            for (const Lie& lie : lies) {
                SCOPED_TRACE(std::string(lie.name) + " at page " + std::to_string(page + 1) +
                             " of " + std::to_string(pages));
                startOver();
                connectWithPages(pages);
                lie.tell(dsm.sources[0].pages[page]);
                scanAtOnce();
                expectIdleAfterOneScan();
                expectWholePagesBefore(page);
                expectListedFilesOnly();
                EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
                expectNextScanWorks();
            }
        }
    }
}

TEST_F(BrokenSourcesTest, EndWhenTheyHaveNoPageAtAll) {
    addSource();
    connect();
    scanAtOnce(); // ready, but every triplet fails
    expectIdleAfterOneScan();
    EXPECT_EQ(alerts.front(), "ShowNoMem");
}

TEST_F(BrokenSourcesTest, EndWhenTheyClaimPagesForEver) {
    connectWithPages(1);
    dsm.sources[0].endlessPages = true;
    dsm.fail(imageMemXfer, twain::TWRC_CANCEL);
    scanAtOnce();
    expectIdleAfterOneScan();
    EXPECT_EQ(dsm.count(imageInfo), 1001U);
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(BrokenSourcesTest, MayAnswerSetupInformationThatNobodyUses) {
    connectWithPages(1);
    dsm.intercept = [](const Triplet& triplet, TW_MEMREF data) -> std::optional<uint16_t> {
        if (triplet != setupMemXfer)
            return std::nullopt;
        *static_cast<TW_SETUPMEMXFER*>(data) = {0xffffffff, 0, 0xffffffff};
        return twain::TWRC_SUCCESS;
    };
    scanAtOnce();
    expectWholePagesBefore(1);
}

TEST_F(BrokenSourcesTest, MayChangeTheRecordOfTheBuffer) {
    connectWithPages(1);
    dsm.intercept = [](const Triplet& triplet, TW_MEMREF data) -> std::optional<uint16_t> {
        if (triplet != imageMemXfer)
            return std::nullopt;
        auto& record = *static_cast<TW_IMAGEMEMXFER*>(data);
        record.Memory = {0, 0xffffffff, nullptr};
        record.YOffset = 0;
        record.Rows = 9;
        record.BytesPerRow = 10;
        return twain::TWRC_XFERDONE;
    };
    scanAtOnce();
    expectIdleAfterOneScan();
    EXPECT_EQ(controller->imageFilePath.size(), 1U);
}

TEST_F(BrokenSourcesTest, MayCallBackInsideEveryCall) {
    connectWithPages(3);
    dsm.intercept = [this](const Triplet&, TW_MEMREF) -> std::optional<uint16_t> {
        dsm.send(twain::MSG_XFERREADY);
        dsm.sendFromOtherThread(twain::MSG_CLOSEDSREQ);
        return std::nullopt;
    };
    controller->toolBarItemScan(nullptr);
    ASSERT_TRUE(runUntilScanEnds());
    dsm.intercept = nullptr;
    runFor(250);
    EXPECT_EQ(controller->imageFilePath.size(), 3U);
    expectWholePagesBefore(3);
    EXPECT_FALSE(gTWAINHandler->dsOpen);
}

} // namespace
} // namespace paperline::test
