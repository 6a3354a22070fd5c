// A batch: enabling, notification, page after page, its end, and what goes wrong on the way.
#include "tests/sources/framework/SourceFixture.h"

namespace paperline::sources {

using namespace twain;

namespace {

class DataSourceBatch : public SourceFixture {};

} // namespace

TEST_F(DataSourceBatch, TellsTheApplicationInsideEnabling) {
    reachTransferReady({ScriptedPage::of(8, 8, 8)});
    EXPECT_EQ(ScriptedManager::sourceId, 12u);
    EXPECT_EQ(ScriptedManager::applicationId, 77u);
    EXPECT_EQ(feed->calls, (std::vector<std::string>{"open", "start", "nextPage"}));
}

TEST_F(DataSourceBatch, ThreePagesThenNone) {
    reachTransferReady(
        {ScriptedPage::of(8, 8, 8), ScriptedPage::of(9, 9, 1), ScriptedPage::of(7, 7, 24)});
    uint16_t count = 0;
    EXPECT_EQ(pending(MSG_GET, count), TWRC_SUCCESS);
    EXPECT_EQ(count, 65535);
    for (const int expected : {65535, 65535, 0}) {
        std::vector<uint8_t> page;
        pullPage(1000, page);
        EXPECT_EQ(page, feed->current.pixels);
        EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_SUCCESS);
        EXPECT_EQ(count, expected);
    }
    EXPECT_EQ(feed->calls.back(), "stop");
    EXPECT_EQ(disable(), TWRC_SUCCESS);
    EXPECT_EQ(close(), TWRC_SUCCESS);
}

TEST_F(DataSourceBatch, TheSameSourceScansAgain) {
    reachTransferReady({ScriptedPage::of(8, 8, 8)});
    uint16_t count = 1;
    EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(disable(), TWRC_SUCCESS);
    feed->pages = {ScriptedPage::of(4, 4, 8)};
    EXPECT_EQ(enable(), TWRC_SUCCESS);
    EXPECT_EQ(ScriptedManager::messages.size(), 2u);
}

TEST_F(DataSourceBatch, OnlyTheWantedPagesAreFetched) {
    giveEntryPoint();
    feed->pages = {ScriptedPage::of(8, 8, 8), ScriptedPage::of(8, 8, 8), ScriptedPage::of(8, 8, 8)};
    ASSERT_EQ(open(), TWRC_SUCCESS);
    abi::OneValue two{TWTY_INT16, 2};
    abi::Capability capability{CAP_XFERCOUNT, TWON_ONEVALUE, nullptr};
    capability.hContainer = ScriptedManager::allocate(sizeof two);
    std::memcpy(ScriptedManager::lock(capability.hContainer), &two, sizeof two);
    ASSERT_EQ(control(DAT_CAPABILITY, MSG_SET, &capability), TWRC_SUCCESS);
    ScriptedManager::release(capability.hContainer);
    ASSERT_EQ(enable(), TWRC_SUCCESS);
    uint16_t count = 9;
    EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_SUCCESS);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(feed->pages.size(), 1u) << "the third page stays in the feeder";
}

TEST_F(DataSourceBatch, AJamKeepsTheEarlierPagesAndSaysWhy) {
    reachTransferReady({ScriptedPage::of(8, 8, 8), ScriptedPage::failing(ScanStatus::paperJam)});
    std::vector<uint8_t> page;
    EXPECT_EQ(pullPage(1000, page), std::vector<uint16_t>{TWRC_XFERDONE});
    uint16_t count = 9;
    EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_CHECKSTATUS);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(condition(), TWCC_PAPERJAM);
    EXPECT_EQ(feed->calls.back(), "stop");
    EXPECT_EQ(disable(), TWRC_SUCCESS);
}

TEST_F(DataSourceBatch, TheDevicesCancelButtonEndsTheBatch) {
    reachTransferReady({ScriptedPage::of(8, 8, 8), ScriptedPage::failing(ScanStatus::cancelled)});
    uint16_t count = 9;
    EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_CANCEL);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(disable(), TWRC_SUCCESS);
}

TEST_F(DataSourceBatch, ResetThrowsTheRestAway) {
    reachTransferReady({ScriptedPage::of(8, 8, 8), ScriptedPage::of(8, 8, 8)});
    uint16_t count = 9;
    EXPECT_EQ(pending(MSG_RESET, count), TWRC_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(feed->calls.back(), "stop");
    EXPECT_EQ(disable(), TWRC_SUCCESS);
    EXPECT_EQ(close(), TWRC_SUCCESS);
}

TEST_F(DataSourceBatch, HasNoDialogOfItsOwn) {
    giveEntryPoint();
    ASSERT_EQ(open(), TWRC_SUCCESS);
    abi::UserInterface ui{1, 0, nullptr};
    expectFailure(control(DAT_USERINTERFACE, MSG_ENABLEDSUIONLY, &ui), TWCC_BADPROTOCOL);
    feed->pages = {ScriptedPage::of(8, 8, 8)};
    EXPECT_EQ(control(DAT_USERINTERFACE, MSG_ENABLEDS, &ui), TWRC_SUCCESS);
    EXPECT_EQ(ScriptedManager::messages.size(), 1u);
}

TEST_F(DataSourceBatch, AnApplicationMayTransferInsideTheNotification) {
    giveEntryPoint();
    feed->pages = {ScriptedPage::of(8, 8, 8)};
    ASSERT_EQ(open(), TWRC_SUCCESS);
    std::vector<uint8_t> page;
    ScriptedManager::insideNotification = [&] {
        uint16_t count = 1;
        pullPage(1000, page);
        EXPECT_EQ(pending(MSG_ENDXFER, count), TWRC_SUCCESS);
        EXPECT_EQ(disable(), TWRC_SUCCESS);
    };
    EXPECT_EQ(enable(), TWRC_SUCCESS);
    EXPECT_EQ(page.size(), 64u);
    EXPECT_EQ(close(), TWRC_SUCCESS);
}

TEST_F(DataSourceBatch, WithoutACallbackTheEventSaysThatAPageIsReady) {
    feed->pages = {ScriptedPage::of(8, 8, 8)}; // and no entry point
    ASSERT_EQ(open(), TWRC_SUCCESS);
    ASSERT_EQ(enable(), TWRC_SUCCESS);
    abi::Event event{nullptr, 0x7777};
    EXPECT_EQ(control(DAT_EVENT, MSG_PROCESSEVENT, &event), TWRC_DSEVENT);
    EXPECT_EQ(event.TWMessage, MSG_XFERREADY);
    EXPECT_EQ(control(DAT_EVENT, MSG_PROCESSEVENT, &event), TWRC_NOTDSEVENT);
    EXPECT_EQ(event.TWMessage, MSG_NULL);
}

TEST_F(DataSourceBatch, AForwardedCallbackIsCalledDirectly) {
    abi::Callback callback{reinterpret_cast<void*>(&ScriptedManager::entry), 5, 0};
    ASSERT_EQ(control(DAT_CALLBACK, MSG_REGISTER_CALLBACK, &callback), TWRC_SUCCESS);
    feed->pages = {ScriptedPage::of(8, 8, 8)};
    ASSERT_EQ(open(), TWRC_SUCCESS);
    ASSERT_EQ(enable(), TWRC_SUCCESS);
    EXPECT_EQ(ScriptedManager::messages, std::vector<uint16_t>{MSG_XFERREADY});
    abi::Event event{};
    EXPECT_EQ(control(DAT_EVENT, MSG_PROCESSEVENT, &event), TWRC_NOTDSEVENT) << "told twice";
}

TEST_F(DataSourceBatch, AManagerThatRefusesTheNotificationLeavesItToTheEvent) {
    giveEntryPoint();
    ScriptedManager::answer = TWRC_FAILURE;
    feed->pages = {ScriptedPage::of(8, 8, 8)};
    ASSERT_EQ(open(), TWRC_SUCCESS);
    ASSERT_EQ(enable(), TWRC_SUCCESS);
    abi::Event event{};
    EXPECT_EQ(control(DAT_EVENT, MSG_PROCESSEVENT, &event), TWRC_DSEVENT);
}

TEST_F(DataSourceBatch, APageThatDoesNotHoldTogetherIsTheDevicesFailure) {
    std::vector<ScriptedPage> broken(6, ScriptedPage::of(8, 8, 8));
    broken[0].format.widthPixels = 0;
    broken[1].format.heightPixels = -1;
    broken[2].format.bitsPerPixel = 16;
    broken[3].pixels.pop_back();
    broken[4].format.heightPixels = INT32_MAX;
    broken[5].format.widthPixels = INT32_MAX;
    broken[5].format.bitsPerPixel = 24;
    giveEntryPoint();
    ASSERT_EQ(open(), TWRC_SUCCESS);
    for (const ScriptedPage& page : broken) {
        feed->pages = {page};
        expectFailure(enable(), TWCC_CHECKDEVICEONLINE);
        EXPECT_EQ(feed->calls.back(), "stop");
    }
    feed->pages = {ScriptedPage::of(8, 8, 8)};
    EXPECT_EQ(enable(), TWRC_SUCCESS);
}

TEST_F(DataSourceBatch, ASourceThrownAwayWhileTransferringEndsItsBatch) {
    std::vector<std::string> calls;
    class LoggingFeed : public ScriptedFeed {
    public:
        explicit LoggingFeed(std::vector<std::string>& log) : log_(log) {}
        void stop() override { log_.push_back("stop"); }
        void close() override { log_.push_back("close"); }

    private:
        std::vector<std::string>& log_;
    };
    auto own = std::make_unique<LoggingFeed>(calls);
    own->pages = {ScriptedPage::of(8, 8, 8)};
    {
        DataSource other({}, std::move(own));
        abi::Identity identity{};
        abi::UserInterface ui{};
        other.entry(&application, {DG_CONTROL, DAT_IDENTITY, MSG_OPENDS}, &identity);
        other.entry(&application, {DG_CONTROL, DAT_USERINTERFACE, MSG_ENABLEDS}, &ui);
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"stop", "close"}));
}

namespace {

struct StatusCase {
    ScanStatus status;
    uint16_t returnCode;
    uint16_t conditionCode;
};

const StatusCase statusCases[] = {
    {ScanStatus::noMorePages, TWRC_FAILURE, TWCC_NOMEDIA},
    {ScanStatus::cancelled, TWRC_CANCEL, TWCC_SUCCESS},
    {ScanStatus::deviceBusy, TWRC_FAILURE, TWCC_MAXCONNECTIONS},
    {ScanStatus::paperJam, TWRC_FAILURE, TWCC_PAPERJAM},
    {ScanStatus::coverOpen, TWRC_FAILURE, TWCC_INTERLOCK},
    {ScanStatus::invalid, TWRC_FAILURE, TWCC_BADVALUE},
    {ScanStatus::unsupported, TWRC_FAILURE, TWCC_BADVALUE},
    {ScanStatus::ioError, TWRC_FAILURE, TWCC_CHECKDEVICEONLINE},
    {ScanStatus::noMemory, TWRC_FAILURE, TWCC_LOWMEMORY},
    {ScanStatus::accessDenied, TWRC_FAILURE, TWCC_DENIED},
    {ScanStatus::noSuchDevice, TWRC_FAILURE, TWCC_CHECKDEVICEONLINE},
    {ScanStatus::workerDied, TWRC_FAILURE, TWCC_OPERATIONERROR},
    {ScanStatus::workerHung, TWRC_FAILURE, conditionWorkerHung},
};

class FirstPageFails : public SourceFixture, public testing::WithParamInterface<StatusCase> {};

} // namespace

TEST_P(FirstPageFails, AndSoDoesEnabling) {
    giveEntryPoint();
    ASSERT_EQ(open(), TWRC_SUCCESS);
    feed->pages = {ScriptedPage::failing(GetParam().status)};
    EXPECT_EQ(enable(), GetParam().returnCode);
    EXPECT_EQ(condition(), GetParam().conditionCode);
    EXPECT_TRUE(ScriptedManager::messages.empty());
    EXPECT_EQ(feed->calls.back(), "stop");
    EXPECT_EQ(close(), TWRC_SUCCESS);
}

TEST_P(FirstPageFails, AndSoDoesAStartThatFails) {
    giveEntryPoint();
    ASSERT_EQ(open(), TWRC_SUCCESS);
    feed->startStatus = GetParam().status;
    EXPECT_EQ(enable(), GetParam().returnCode);
    EXPECT_EQ(condition(), GetParam().conditionCode);
}

INSTANTIATE_TEST_SUITE_P(EveryStatus, FirstPageFails, testing::ValuesIn(statusCases));

} // namespace paperline::sources
