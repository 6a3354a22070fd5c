// Every fault of the data source at least once, against a scripted feed and manager.
#include "tests/sources/faulty/FaultySource.h"
#include "tests/sources/framework/SourceFixture.h"

#include <chrono>
#include <cstdlib>
#include <mutex>

namespace paperline::sources {

using namespace twain;

namespace {

class Faulty : public SourceFixture {
protected:
    Faulty() {
        unsetenv("XDG_DATA_HOME");
        setenv("HOME", "/nonexistent", 1);
        auto owned = std::make_unique<ScriptedFeed>();
        feed = owned.get();
        feed->descriptors = {rangeOption("count", "3", 1, 10000)};
        SourceConfiguration configuration;
        configuration.product = "Faulty Scanner";
        source = std::make_unique<FaultySource>(configuration, std::move(owned));
    }
    ~Faulty() override { unsetenv("PAPERLINE_SOURCE_OPTIONS"); }

    void fault(const std::string& text) {
        ASSERT_TRUE(FaultList::parse(text)) << text;
        setenv("PAPERLINE_SOURCE_OPTIONS", ("mode=Gray\nfault=" + text).c_str(), 1);
    }
    // With this fault, three pages of 4 x 6 grey pixels, enabled.
    void scanWith(const std::string& text) {
        fault(text);
        giveEntryPoint();
        feed->pages = {
            ScriptedPage::of(4, 6, 8), ScriptedPage::of(4, 6, 8), ScriptedPage::of(4, 6, 8)};
        ASSERT_EQ(open(), TWRC_SUCCESS);
        ASSERT_EQ(enable(), TWRC_SUCCESS);
    }
    abi::ImageInfo imageInfo() {
        abi::ImageInfo info{};
        EXPECT_EQ(image(DAT_IMAGEINFO, MSG_GET, &info), TWRC_SUCCESS);
        return info;
    }
    uint16_t strip(abi::ImageMemXfer& transfer) {
        buffer.assign(24, 0);
        transfer = memoryRequest(buffer);
        return image(DAT_IMAGEMEMXFER, MSG_GET, &transfer);
    }
    uint16_t endPage() {
        uint16_t count = 0;
        return pending(MSG_ENDXFER, count);
    }

    std::vector<uint8_t> buffer;
};

} // namespace

TEST_F(Faulty, WithoutFaultsItIsAnOrdinarySource) {
    scanWith("");
    for (int page = 0; page < 3; ++page) {
        std::vector<uint8_t> pixels;
        EXPECT_EQ(pullPage(24, pixels), std::vector<uint16_t>{TWRC_XFERDONE});
        EXPECT_EQ(endPage(), TWRC_SUCCESS);
    }
    EXPECT_EQ(disable(), TWRC_SUCCESS);
    EXPECT_EQ(close(), TWRC_SUCCESS);
}

TEST_F(Faulty, OpeningFails) {
    fault("open-fail:16");
    expectFailure(open(), TWCC_DENIED);
    EXPECT_TRUE(feed->calls.empty());
    fault("open-cancel");
    EXPECT_EQ(open(), TWRC_CANCEL);
}

TEST_F(Faulty, VanishesAfterTheFirstOpening) {
    fault("vanish");
    EXPECT_EQ(open(), TWRC_SUCCESS);
    EXPECT_EQ(close(), TWRC_SUCCESS);
    expectFailure(open(), TWCC_NODS);
    fault("vanish:0");
    expectFailure(open(), TWCC_NODS);
    fault("");
    EXPECT_EQ(open(), TWRC_SUCCESS);
}

TEST_F(Faulty, ClosingEnablingAndDisablingFail) {
    fault("close-fail,enable-fail:23,disable-cancel");
    ASSERT_EQ(open(), TWRC_SUCCESS);
    expectFailure(enable(), TWCC_CHECKDEVICEONLINE);
    EXPECT_EQ(disable(), TWRC_CANCEL);
    expectFailure(close(), TWCC_OPERATIONERROR);
}

TEST_F(Faulty, ATripletFailsOnTheFirstTheMiddleOrTheLastPage) {
    for (const auto& [place, page] : {std::pair{"first", 1}, {"middle", 2}, {"last", 3}}) {
        scanWith(std::string("info-fail@") + place);
        for (int current = 1; current <= 3; ++current) {
            abi::ImageInfo info{};
            EXPECT_EQ(image(DAT_IMAGEINFO, MSG_GET, &info) == TWRC_FAILURE, current == page);
            EXPECT_EQ(endPage(), TWRC_SUCCESS);
        }
        EXPECT_EQ(disable(), TWRC_SUCCESS);
        EXPECT_EQ(close(), TWRC_SUCCESS);
        ScriptedManager::messages.clear();
    }
}

TEST_F(Faulty, EveryTransferTripletFailsAndCancels) {
    struct Named {
        const char* name;
        uint32_t group;
        uint16_t type;
        uint16_t message;
    };
    for (const Named& named : {Named{"info", DG_IMAGE, DAT_IMAGEINFO, MSG_GET},
                               Named{"setup", DG_CONTROL, DAT_SETUPMEMXFER, MSG_GET},
                               Named{"strip", DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET},
                               Named{"native", DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET},
                               Named{"filesetup", DG_CONTROL, DAT_SETUPFILEXFER, MSG_GETDEFAULT},
                               Named{"file", DG_IMAGE, DAT_IMAGEFILEXFER, MSG_GET},
                               Named{"extinfo", DG_IMAGE, DAT_EXTIMAGEINFO, MSG_GET},
                               Named{"end", DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER},
                               Named{"reset", DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET}}) {
        alignas(16) std::array<uint8_t, 512> record{};
        const Triplet triplet{named.group, named.type, named.message};
        scanWith(std::string(named.name) + "-fail:20");
        expectFailure(source->entry(&application, triplet, record.data()), TWCC_PAPERJAM);
        fault("");
        ASSERT_EQ(open(), TWRC_FAILURE); // still open; reads the faults afresh
        fault(std::string(named.name) + "-cancel");
        open();
        EXPECT_EQ(source->entry(&application, triplet, record.data()), TWRC_CANCEL) << named.name;
        fault("");
        open();
        uint16_t count = 0;
        EXPECT_EQ(pending(MSG_RESET, count), TWRC_SUCCESS);
        EXPECT_EQ(disable(), TWRC_SUCCESS);
        EXPECT_EQ(close(), TWRC_SUCCESS);
        ScriptedManager::messages.clear();
    }
}

TEST_F(Faulty, HangsForAsLongAsAsked) {
    scanWith("info-hang@1:1");
    const auto start = std::chrono::steady_clock::now();
    imageInfo();
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(990));
    EXPECT_EQ(endPage(), TWRC_SUCCESS);
    imageInfo(); // the second page does not hang
}

TEST_F(Faulty, ImageInfoLies) {
    scanWith("info-width:-7,info-height:2147483647,info-resolution");
    abi::ImageInfo info = imageInfo();
    EXPECT_EQ(+info.ImageWidth, -7);
    EXPECT_EQ(+info.ImageLength, INT32_MAX);
    EXPECT_EQ(info.XResolution.Whole, 0);
    EXPECT_EQ(info.YResolution.Whole, 0);
    EXPECT_EQ(info.BitsPerPixel, 8) << "the rest stays true";
}

TEST_F(Faulty, ImageInfoInDepthsThatAreNotAsked) {
    struct Depth {
        int bits, samples, perSample;
    };
    for (const auto& [bits, samples, perSample] :
         {Depth{2, 1, 2}, Depth{4, 1, 4}, Depth{16, 1, 16}, Depth{32, 4, 8}, Depth{48, 3, 16}}) {
        scanWith("info-bits:" + std::to_string(bits));
        const abi::ImageInfo info = imageInfo();
        EXPECT_EQ(info.BitsPerPixel, bits);
        EXPECT_EQ(info.SamplesPerPixel, samples);
        EXPECT_EQ(info.BitsPerSample[samples - 1], perSample);
        EXPECT_EQ(info.BitsPerSample[samples], 0);
        uint16_t count = 0;
        pending(MSG_RESET, count);
        disable();
        EXPECT_EQ(close(), TWRC_SUCCESS);
    }
    scanWith("info-samples:0");
    EXPECT_EQ(imageInfo().SamplesPerPixel, 0);
}

TEST_F(Faulty, StripsLieAboutTheirPlaceAndLength) {
    abi::ImageMemXfer transfer{};
    scanWith("strip-outside@1:2,strip-short@2,strip-long@3,strip-rows@3:77");
    EXPECT_EQ(strip(transfer), TWRC_XFERDONE);
    EXPECT_EQ(+transfer.YOffset, 8u);
    EXPECT_EQ(endPage(), TWRC_SUCCESS);
    EXPECT_EQ(strip(transfer), TWRC_XFERDONE);
    EXPECT_EQ(+transfer.BytesPerRow, 2u);
    EXPECT_EQ(endPage(), TWRC_SUCCESS);
    EXPECT_EQ(strip(transfer), TWRC_XFERDONE);
    EXPECT_EQ(+transfer.BytesPerRow, 16u);
    EXPECT_EQ(+transfer.Rows, 77u);
}

TEST_F(Faulty, StripsAreSmall) {
    scanWith("strip-small:2");
    abi::ImageMemXfer transfer{};
    EXPECT_EQ(strip(transfer), TWRC_SUCCESS);
    EXPECT_EQ(+transfer.Rows, 2u);
    EXPECT_EQ(+transfer.Memory.Length, 24u) << "the application's own record";
    EXPECT_EQ(strip(transfer), TWRC_SUCCESS);
    EXPECT_EQ(strip(transfer), TWRC_XFERDONE);
    EXPECT_EQ(+transfer.YOffset, 4u);
}

TEST_F(Faulty, APageBreaksOffBetweenStrips) {
    scanWith("strip-small:2,strip-break@1:23");
    abi::ImageMemXfer transfer{};
    EXPECT_EQ(strip(transfer), TWRC_SUCCESS);
    expectFailure(strip(transfer), TWCC_CHECKDEVICEONLINE);
    EXPECT_EQ(endPage(), TWRC_SUCCESS);
    EXPECT_EQ(strip(transfer), TWRC_SUCCESS);
    EXPECT_EQ(strip(transfer), TWRC_SUCCESS);
}

TEST_F(Faulty, StripsWithoutRowsForEver) {
    scanWith("strip-empty");
    for (int i = 0; i < 100; ++i) {
        abi::ImageMemXfer transfer{};
        ASSERT_EQ(strip(transfer), TWRC_SUCCESS);
        ASSERT_EQ(+transfer.Rows, 0u);
    }
}

TEST_F(Faulty, StripsAfterTheLast) {
    scanWith("strip-endless@1:3,strip-endless@2");
    abi::ImageMemXfer transfer{};
    EXPECT_EQ(strip(transfer), TWRC_SUCCESS);
    EXPECT_EQ(+transfer.Rows, 6u);
    EXPECT_EQ(strip(transfer), TWRC_SUCCESS);
    EXPECT_EQ(+transfer.YOffset, 6u);
    EXPECT_EQ(+transfer.Rows, 1u);
    EXPECT_EQ(strip(transfer), TWRC_SUCCESS);
    EXPECT_EQ(strip(transfer), TWRC_XFERDONE);
    EXPECT_EQ(+transfer.YOffset, 8u);
    EXPECT_EQ(endPage(), TWRC_SUCCESS);
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(strip(transfer), TWRC_SUCCESS);
}

TEST_F(Faulty, PromisesPagesThatDoNotCome) {
    scanWith("end-count@last:5");
    uint16_t count = 0;
    EXPECT_EQ(endPage(), TWRC_SUCCESS);
    EXPECT_EQ(endPage(), TWRC_SUCCESS);
    EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_SUCCESS);
    EXPECT_EQ(count, 5);
    expectFailure(pending(MSG_ENDXFER, count), TWCC_SEQERROR);
}

TEST_F(Faulty, CallsBackTwiceOrNeverOrAsksToBeClosed) {
    scanWith("callback-twice");
    EXPECT_EQ(ScriptedManager::messages, (std::vector<uint16_t>{MSG_XFERREADY, MSG_XFERREADY}));
    uint16_t count = 0;
    pending(MSG_RESET, count);
    disable();
    close();
    ScriptedManager::messages.clear();
    scanWith("callback-never");
    EXPECT_TRUE(ScriptedManager::messages.empty());
    abi::Event event{};
    EXPECT_EQ(control(DAT_EVENT, MSG_PROCESSEVENT, &event), TWRC_NOTDSEVENT);
    pending(MSG_RESET, count);
    disable();
    close();
    scanWith("callback-close");
    EXPECT_EQ(ScriptedManager::messages, std::vector<uint16_t>{MSG_CLOSEDSREQ});
}

TEST_F(Faulty, CallsBackFromAnotherThread) {
    std::mutex mutex;
    std::condition_variable called;
    std::thread::id caller;
    ScriptedManager::insideNotification = [&] {
        const std::lock_guard lock(mutex);
        caller = std::this_thread::get_id();
        called.notify_all();
    };
    scanWith("callback-thread");
    std::unique_lock lock(mutex);
    ASSERT_TRUE(called.wait_for(
        lock, std::chrono::seconds(20), [&] { return caller != std::thread::id(); }));
    EXPECT_NE(caller, std::this_thread::get_id());
    lock.unlock();
    source.reset();
}

TEST_F(Faulty, ALateCallbackDiesWithItsSource) {
    scanWith("callback-late:600000");
    uint16_t count = 0;
    EXPECT_EQ(pending(MSG_RESET, count), TWRC_SUCCESS);
    EXPECT_EQ(disable(), TWRC_SUCCESS);
    EXPECT_EQ(close(), TWRC_SUCCESS);
    EXPECT_TRUE(ScriptedManager::messages.empty());
}

TEST_F(Faulty, ALateCallbackComes) {
    std::mutex mutex;
    std::condition_variable called;
    bool came = false;
    ScriptedManager::insideNotification = [&] {
        const std::lock_guard lock(mutex);
        came = true;
        called.notify_all();
    };
    scanWith("callback-late:20");
    std::unique_lock lock(mutex);
    EXPECT_TRUE(called.wait_for(lock, std::chrono::seconds(20), [&] { return came; }));
    lock.unlock();
    source.reset();
}

} // namespace paperline::sources
