// The application's entry with real managers and sources: ours and another maker's.
#include "twain/manager/DataSourceManager.h"
#include "twain/manager/DataSourceManagerMemory.h"

#include "TestPlaces.h"
#include "platform/desktop/MainLoop.h"
#include "platform/places/Places.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <gmock/gmock.h>

#include <cstdlib>
#include <numeric>
#include <thread>

namespace paperline::test {
namespace {

struct Message {
    uint64_t applicationId;
    std::string application;
    uint32_t groups;
    std::string source;
    uint16_t message;
    uint64_t refCon;
    std::thread::id thread;
};
std::vector<Message> messages;

TW_UINT16 receive(TW_IDENTITY* source,
                  TW_IDENTITY* application,
                  TW_UINT32 group,
                  TW_UINT16 type,
                  TW_UINT16 message,
                  TW_MEMREF data) {
    EXPECT_EQ(group, twain::DG_CONTROL);
    EXPECT_EQ(type, twain::DAT_NULL);
    messages.push_back({application->Id,
                        application->ProductName.text(),
                        application->SupportedGroups,
                        source->ProductName.text(),
                        message,
                        reinterpret_cast<uint64_t>(data),
                        std::this_thread::get_id()});
    return twain::TWRC_SUCCESS;
}

enum class Maker { ours, other };

class AdapterSession : public testing::TestWithParam<Maker> {
protected:
    AdapterSession() {
        places.addPlain("1alpha.ds", OTHERMAKER_ALPHA);
        places.addPlain("2beta.ds", OTHERMAKER_BETA);
        places.addPlain("3endless.ds", OTHERMAKER_ENDLESS);
        setBundlePath((places.folder() / "tree/Paperline.app").string());
        ::setenv("OTHERMAKER_DSM_SOURCES", places.plainSources().c_str(), 1);
        if (GetParam() == Maker::other)
            ::setenv("PAPERLINE_DSM", OTHERMAKER_MANAGER, 1);
        application.Id = 1;
        application.SupportedGroups = 3;
        application.ProductName = TW_STR32::from("Application");
        EXPECT_EQ(manager(twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr), 0);
        // As the application does it: before any source is open, and without a destination.
        TW_CALLBACK callback{reinterpret_cast<void*>(&receive), 0x1234, 0};
        EXPECT_EQ(manager(twain::DAT_CALLBACK, twain::MSG_REGISTER_CALLBACK, &callback), 0);
        messages.clear();
    }
    ~AdapterSession() override {
        EXPECT_EQ(manager(twain::DAT_PARENT, twain::MSG_CLOSEDSM, nullptr), 0);
    }

    uint16_t manager(uint16_t type, uint16_t message, void* data) {
        return DSM_Entry(&application, nullptr, twain::DG_CONTROL, type, message, data);
    }
    uint16_t control(uint16_t type, uint16_t message, void* data) {
        return DSM_Entry(&application, &source, twain::DG_CONTROL, type, message, data);
    }
    uint16_t image(uint16_t type, void* data) {
        return DSM_Entry(&application, &source, twain::DG_IMAGE, type, twain::MSG_GET, data);
    }

    void openSource(const std::string& productName) {
        uint16_t code = manager(twain::DAT_IDENTITY, twain::MSG_GETFIRST, &source);
        while (code == 0 && source.ProductName.text() != productName)
            code = manager(twain::DAT_IDENTITY, twain::MSG_GETNEXT, &source);
        ASSERT_EQ(code, 0);
        ASSERT_EQ(manager(twain::DAT_IDENTITY, twain::MSG_OPENDS, &source), 0);
    }
    void enable(uint16_t message = twain::MSG_ENABLEDS) {
        TW_USERINTERFACE none{};
        ASSERT_EQ(control(twain::DAT_USERINTERFACE, message, &none), 0);
    }
    void finish() {
        TW_PENDINGXFERS pending{};
        control(twain::DAT_PENDINGXFERS, twain::MSG_RESET, &pending);
        EXPECT_EQ(control(twain::DAT_USERINTERFACE, twain::MSG_DISABLEDS, nullptr), 0);
        EXPECT_EQ(manager(twain::DAT_IDENTITY, twain::MSG_CLOSEDS, &source), 0);
    }

    void expectOneMessage(const std::string& from, uint16_t message) {
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].applicationId, 1U);
        EXPECT_EQ(messages[0].application, "Application");
        EXPECT_EQ(messages[0].groups, 3U);
        EXPECT_EQ(messages[0].source, from);
        EXPECT_EQ(messages[0].message, message);
        EXPECT_EQ(messages[0].refCon, 0x1234U);
        EXPECT_EQ(messages[0].thread, std::this_thread::get_id());
    }

    TestPlaces places;
    TW_IDENTITY application{};
    TW_IDENTITY source{};
};

INSTANTIATE_TEST_SUITE_P(BothManagers,
                         AdapterSession,
                         testing::Values(Maker::ours, Maker::other),
                         [](const auto& information) {
                             return information.param == Maker::ours ? "Ours" : "OtherMakers";
                         });

TEST_P(AdapterSession, CarriesAMessageFromInsideEnabling) {
    openSource("Alpha");
    enable();
    expectOneMessage("Alpha", twain::MSG_XFERREADY);
    finish();
}

TEST_P(AdapterSession, CarriesAMessageFromAnotherThreadToTheMainLoop) {
    int count = 0;
    QCoreApplication loop(count, nullptr);
    openSource("Beta");
    enable();
    QElapsedTimer waited;
    waited.start();
    while (messages.empty() && waited.elapsed() < 60000)
        loop.processEvents(QEventLoop::WaitForMoreEvents, 100);
    expectOneMessage("Beta", twain::MSG_XFERREADY);
    finish();
}

TEST_P(AdapterSession, DropsAMessageThatArrivesAfterTheManagerWasClosed) {
    int count = 0;
    QCoreApplication loop(count, nullptr);
    openSource("Beta");
    enable();
    finish(); // waits for the source's thread: its message is queued by now
    EXPECT_EQ(manager(twain::DAT_PARENT, twain::MSG_CLOSEDSM, nullptr), 0);
    loop.processEvents();
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(manager(twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr), 0);
}

TEST_P(AdapterSession, CarriesCloseRequests) {
    openSource("Alpha");
    enable(twain::MSG_ENABLEDSUIONLY);
    expectOneMessage("Alpha", twain::MSG_CLOSEDSREQ);
    finish();
}

TEST_P(AdapterSession, KeepsTheCallbackForEverySourceThatIsOpened) {
    for (int i = 0; i < 3; ++i) {
        openSource("Alpha");
        enable();
        expectOneMessage("Alpha", twain::MSG_XFERREADY);
        finish();
        messages.clear();
    }
}

TEST_P(AdapterSession, TransfersAPageThroughMemory) {
    openSource("Alpha");
    enable();
    TW_IMAGEINFO info{};
    ASSERT_EQ(image(twain::DAT_IMAGEINFO, &info), 0);
    EXPECT_EQ(info.XResolution.Whole, 300);
    EXPECT_EQ(info.YResolution.Whole, 150);
    EXPECT_EQ(info.YResolution.Frac, 32768);
    EXPECT_EQ(info.ImageWidth, 20);
    EXPECT_EQ(info.ImageLength, 10);
    EXPECT_EQ(info.BitsPerSample[0], 8);
    TW_SETUPMEMXFER setup{};
    ASSERT_EQ(control(twain::DAT_SETUPMEMXFER, twain::MSG_GET, &setup), 0);
    EXPECT_EQ(setup.Preferred, 80U);
    std::vector<uint8_t> buffer(200);
    for (const uint32_t firstRow : {0U, 4U, 8U}) {
        TW_IMAGEMEMXFER strip{};
        strip.Memory = {9, 200, buffer.data()};
        EXPECT_EQ(image(twain::DAT_IMAGEMEMXFER, &strip),
                  firstRow == 8 ? twain::TWRC_XFERDONE : twain::TWRC_SUCCESS);
        EXPECT_EQ(strip.YOffset, firstRow);
        EXPECT_EQ(strip.Rows, firstRow == 8 ? 2U : 4U);
        EXPECT_EQ(strip.BytesPerRow, 20U);
        EXPECT_EQ(buffer[0], firstRow * 20 % 100);
    }
    TW_PENDINGXFERS pending{};
    ASSERT_EQ(control(twain::DAT_PENDINGXFERS, twain::MSG_ENDXFER, &pending), 0);
    EXPECT_EQ(pending.Count, 1);
    finish();
}

TEST_P(AdapterSession, HandsOverANativePictureWithTheManagersMemory) {
    openSource("Alpha");
    enable();
    TW_HANDLE handle = nullptr;
    ASSERT_EQ(image(twain::DAT_IMAGENATIVEXFER, &handle), twain::TWRC_XFERDONE);
    ASSERT_NE(handle, nullptr);
    EXPECT_STREQ(static_cast<const char*>(lockDsmMemory(handle)), "a picture of another maker");
    unlockDsmMemory(handle);
    if (GetParam() == Maker::ours)
        EXPECT_GE(dsmMemorySize(handle), 27U);
    else
        EXPECT_EQ(dsmMemorySize(handle), 0U);
    freeDsmMemory(handle);
    finish();
}

TEST_P(AdapterSession, SetsUpAFile) {
    openSource("Alpha");
    TW_SETUPFILEXFER setup{};
    ASSERT_EQ(control(twain::DAT_SETUPFILEXFER, twain::MSG_GETDEFAULT, &setup), 0);
    const std::string standard = "/nowhere/default.tif";
    EXPECT_EQ(setup.FileName[0], standard.size());
    EXPECT_EQ(std::string(setup.FileName.begin() + 1, setup.FileName.begin() + 21), standard);
    std::iota(setup.FileName.begin() + 1, setup.FileName.end(), uint8_t{1}); // 255 bytes, no zero
    setup.FileName[0] = 255;
    const auto name = setup.FileName;
    ASSERT_EQ(control(twain::DAT_SETUPFILEXFER, twain::MSG_SET, &setup), 0);
    TW_SETUPFILEXFER answer{};
    ASSERT_EQ(control(twain::DAT_SETUPFILEXFER, twain::MSG_GET, &answer), 0);
    EXPECT_EQ(answer.FileName, name);
    EXPECT_EQ(manager(twain::DAT_IDENTITY, twain::MSG_CLOSEDS, &source), 0);
}

TEST_P(AdapterSession, AsksForExtendedInformation) {
    openSource("Alpha");
    TW_EXTIMAGEINFO request{};
    request.NumInfos = 1;
    request.Info[0].InfoID = 0x1234;
    ASSERT_EQ(image(twain::DAT_EXTIMAGEINFO, &request), 0);
    EXPECT_EQ(request.Info[0].Item, 1000U + 0x1234U);
    EXPECT_EQ(request.Info[0].NumItems, 1);
    EXPECT_EQ(manager(twain::DAT_IDENTITY, twain::MSG_CLOSEDS, &source), 0);
}

TEST_P(AdapterSession, TellsTheConditionOfAFailure) {
    openSource("Alpha");
    TW_IMAGEINFO info{};
    ASSERT_EQ(image(twain::DAT_IMAGEINFO, &info), twain::TWRC_FAILURE); // not enabled
    TW_STATUS status{};
    ASSERT_EQ(control(twain::DAT_STATUS, twain::MSG_GET, &status), 0);
    EXPECT_EQ(status.ConditionCode, twain::TWCC_SEQERROR);
    EXPECT_EQ(manager(twain::DAT_IDENTITY, twain::MSG_CLOSEDS, &source), 0);
}

TEST_P(AdapterSession, OpensASourceWhoseNamesHaveNoEnd) {
    openSource(std::string(33, 'P'));
    EXPECT_EQ(source.Manufacturer.text(), std::string(33, 'M'));
    EXPECT_EQ(manager(twain::DAT_IDENTITY, twain::MSG_CLOSEDS, &source), 0);
}

TEST_P(AdapterSession, OpensOnlyOnce) {
    EXPECT_EQ(manager(twain::DAT_PARENT, twain::MSG_OPENDSM, nullptr), twain::TWRC_FAILURE);
    TW_STATUS status{};
    ASSERT_EQ(manager(twain::DAT_STATUS, twain::MSG_GET, &status), 0);
    EXPECT_EQ(status.ConditionCode, twain::TWCC_SEQERROR);
    EXPECT_EQ(manager(twain::DAT_IDENTITY, twain::MSG_GETFIRST, &source), 0); // still open
}

} // namespace
} // namespace paperline::test
