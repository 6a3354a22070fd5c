// Which triplet is taken in which state, and what the records of opening and status hold.
#include "tests/sources/framework/SourceFixture.h"

#include <algorithm>

namespace paperline::sources {

using namespace twain;

namespace {

class DataSourceSequence : public SourceFixture {};

} // namespace

TEST_F(DataSourceSequence, IdentityHasTheStandardsLayout) {
    abi::Identity identity{};
    identity.Id = 9;
    ASSERT_EQ(control(DAT_IDENTITY, MSG_GET, &identity), TWRC_SUCCESS);
    std::array<uint8_t, 156> bytes{};
    std::memcpy(bytes.data(), &identity, sizeof identity);
    const std::array<uint8_t, 15> head{9, 0, 0, 0, 1, 0, 0, 0, 13, 0, 1, 0, '1', '.', '0'};
    EXPECT_TRUE(std::equal(head.begin(), head.end(), bytes.begin()));
    // Protocol 2.4, groups control and image and the flag of a 2.x source.
    const std::array<uint8_t, 8> protocol{2, 0, 4, 0, 3, 0, 0, 0x40};
    EXPECT_TRUE(std::equal(protocol.begin(), protocol.end(), bytes.begin() + 46));
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data()) + 54, "Corvane");
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data()) + 88, "PageCentral");
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data()) + 122, "Test Scanner");
}

TEST_F(DataSourceSequence, ALongNameIsCutToWholeCharacters) {
    SourceConfiguration configuration;
    configuration.product = std::string(32, 'x') + "\xc3\xa9"; // the last one needs bytes 33 and 34
    DataSource other(configuration, std::make_unique<ScriptedFeed>());
    abi::Identity identity{};
    ASSERT_EQ(other.entry(&application, {DG_CONTROL, DAT_IDENTITY, MSG_GET}, &identity),
              TWRC_SUCCESS);
    EXPECT_EQ(std::string(identity.ProductName), std::string(32, 'x'));
}

TEST_F(DataSourceSequence, OpensOnceAndSaysWhyNotAgain) {
    ASSERT_EQ(open(), TWRC_SUCCESS);
    expectFailure(open(), TWCC_SEQERROR);
    application.Id = 78;
    expectFailure(open(), TWCC_MAXCONNECTIONS);
    EXPECT_EQ(close(), TWRC_SUCCESS);
    EXPECT_EQ(feed->calls, (std::vector<std::string>{"open", "close"}));
    expectFailure(close(), TWCC_SEQERROR);
}

TEST_F(DataSourceSequence, ADeviceThatDoesNotOpenLeavesTheSourceClosed) {
    feed->openStatus = ScanStatus::accessDenied;
    expectFailure(open(), TWCC_DENIED);
    feed->openStatus = ScanStatus::good;
    EXPECT_EQ(open(), TWRC_SUCCESS);
}

TEST_F(DataSourceSequence, StatusIsClearedByReading) {
    expectFailure(close(), TWCC_SEQERROR);
    EXPECT_EQ(condition(), TWCC_SUCCESS);
    abi::Status status{};
    expectFailure(control(DAT_STATUS, MSG_SET, &status), TWCC_BADPROTOCOL);
}

TEST_F(DataSourceSequence, StatusTextIsTheDevicesOwn) {
    giveEntryPoint();
    feed->openStatus = ScanStatus::ioError;
    feed->text = "Cable fell out";
    EXPECT_EQ(open(), TWRC_FAILURE);
    abi::StatusUtf8 status{};
    ASSERT_EQ(control(DAT_STATUSUTF8, MSG_GET, &status), TWRC_SUCCESS);
    EXPECT_EQ(+status.Size, 15u);
    EXPECT_STREQ(static_cast<const char*>(ScriptedManager::lock(status.UTF8string)),
                 "Cable fell out");
    ScriptedManager::release(status.UTF8string);
    ScriptedManager::outOfMemory = true;
    expectFailure(control(DAT_STATUSUTF8, MSG_GET, &status), TWCC_LOWMEMORY);
}

TEST_F(DataSourceSequence, UnknownTripletsAreRefused) {
    uint32_t data[64]{};
    expectFailure(control(DAT_PARENT, MSG_OPENDSM, data), TWCC_BADPROTOCOL);
    expectFailure(control(DAT_CUSTOMDSDATA, MSG_GET, data), TWCC_BADPROTOCOL);
    expectFailure(source->entry(&application, {DG_AUDIO, DAT_XFERGROUP, MSG_GET}, data),
                  TWCC_BADPROTOCOL);
    expectFailure(control(DAT_IDENTITY, MSG_USERSELECT, data), TWCC_BADPROTOCOL);
    expectFailure(control(DAT_ENTRYPOINT, MSG_GET, data), TWCC_BADPROTOCOL);
    expectFailure(control(DAT_CALLBACK, MSG_GET, data), TWCC_BADPROTOCOL);
    expectFailure(control(DAT_CALLBACK2, MSG_GET, data), TWCC_BADPROTOCOL);
}

// Every triplet that takes a record, without one.
TEST_F(DataSourceSequence, MissingRecordsAreRefused) {
    reachTransferReady({ScriptedPage::of(8, 8, 8)});
    for (const uint16_t type : {DAT_ENTRYPOINT,
                                DAT_CALLBACK,
                                DAT_CALLBACK2,
                                DAT_EVENT,
                                DAT_STATUS,
                                DAT_STATUSUTF8,
                                DAT_XFERGROUP,
                                DAT_PENDINGXFERS,
                                DAT_CAPABILITY,
                                DAT_SETUPMEMXFER,
                                DAT_SETUPFILEXFER})
        expectFailure(control(type, MSG_GET, nullptr), TWCC_BADVALUE);
    for (const uint16_t type :
         {DAT_IMAGEINFO, DAT_IMAGELAYOUT, DAT_IMAGEMEMXFER, DAT_IMAGENATIVEXFER, DAT_EXTIMAGEINFO})
        expectFailure(image(type, MSG_GET, nullptr), TWCC_BADVALUE);
    expectFailure(control(DAT_IDENTITY, MSG_GET, nullptr), TWCC_BADVALUE);
    expectFailure(control(DAT_IDENTITY, MSG_OPENDS, nullptr), TWCC_BADVALUE);
    expectFailure(control(DAT_USERINTERFACE, MSG_ENABLEDS, nullptr), TWCC_BADVALUE);
    abi::Identity identity{};
    EXPECT_EQ(source->entry(nullptr, {DG_CONTROL, DAT_IDENTITY, MSG_OPENDS}, &identity),
              TWRC_FAILURE);
}

TEST_F(DataSourceSequence, AnEntryPointWithoutItsFunctionsIsRefused) {
    auto point = ScriptedManager::entryPoint();
    point.DSM_Entry = nullptr;
    expectFailure(control(DAT_ENTRYPOINT, MSG_SET, &point), TWCC_BADVALUE);
    point = ScriptedManager::entryPoint();
    point.DSM_MemLock = nullptr;
    expectFailure(control(DAT_ENTRYPOINT, MSG_SET, &point), TWCC_BADVALUE);
}

namespace {

struct SequenceCase {
    const char* name;
    uint32_t group;
    uint16_t type;
    uint16_t message;
    int firstState; // allowed from this state ...
    int lastState;  // ... to this one
};

void PrintTo(const SequenceCase& sequence, std::ostream* out) {
    *out << sequence.name;
}

class StateTable : public SourceFixture,
                   public testing::WithParamInterface<std::tuple<SequenceCase, int>> {
protected:
    void reachState(int state) {
        giveEntryPoint();
        feed->pages = {ScriptedPage::of(16, 16, 8), ScriptedPage::of(16, 16, 8)};
        uint16_t count = 0;
        std::vector<uint8_t> buffer(16);
        auto transfer = memoryRequest(buffer);
        if (state >= 4) {
            ASSERT_EQ(open(), TWRC_SUCCESS);
        }
        if (state >= 5) {
            ASSERT_EQ(enable(), TWRC_SUCCESS);
        }
        if (state == 5) {
            ASSERT_EQ(pending(MSG_RESET, count), TWRC_SUCCESS);
        }
        if (state == 7) {
            ASSERT_EQ(image(DAT_IMAGEMEMXFER, MSG_GET, &transfer), TWRC_SUCCESS);
        }
    }
};

const SequenceCase sequences[] = {
    {"identityGet", DG_CONTROL, DAT_IDENTITY, MSG_GET, 3, 7},
    {"openDs", DG_CONTROL, DAT_IDENTITY, MSG_OPENDS, 3, 3},
    {"closeDs", DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS, 4, 4},
    {"enableDs", DG_CONTROL, DAT_USERINTERFACE, MSG_ENABLEDS, 4, 4},
    {"disableDs", DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS, 5, 5},
    {"processEvent", DG_CONTROL, DAT_EVENT, MSG_PROCESSEVENT, 5, 7},
    {"statusGet", DG_CONTROL, DAT_STATUS, MSG_GET, 3, 7},
    {"groupGet", DG_CONTROL, DAT_XFERGROUP, MSG_GET, 4, 6},
    {"capabilityGet", DG_CONTROL, DAT_CAPABILITY, MSG_GET, 4, 7},
    {"capabilitySupport", DG_CONTROL, DAT_CAPABILITY, MSG_QUERYSUPPORT, 4, 7},
    {"capabilityReset", DG_CONTROL, DAT_CAPABILITY, MSG_RESET, 4, 4},
    {"capabilityResetAll", DG_CONTROL, DAT_CAPABILITY, MSG_RESETALL, 4, 4},
    {"capabilitySet", DG_CONTROL, DAT_CAPABILITY, MSG_SET, 4, 4},
    {"setupMemory", DG_CONTROL, DAT_SETUPMEMXFER, MSG_GET, 4, 6},
    {"setupFileGet", DG_CONTROL, DAT_SETUPFILEXFER, MSG_GET, 4, 6},
    {"setupFileDefault", DG_CONTROL, DAT_SETUPFILEXFER, MSG_GETDEFAULT, 4, 6},
    {"setupFileReset", DG_CONTROL, DAT_SETUPFILEXFER, MSG_RESET, 4, 6},
    {"pendingGet", DG_CONTROL, DAT_PENDINGXFERS, MSG_GET, 4, 7},
    {"endTransfer", DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER, 6, 7},
    {"resetTransfers", DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET, 6, 6},
    {"imageInfo", DG_IMAGE, DAT_IMAGEINFO, MSG_GET, 6, 7},
    {"layoutGet", DG_IMAGE, DAT_IMAGELAYOUT, MSG_GET, 4, 6},
    {"layoutSet", DG_IMAGE, DAT_IMAGELAYOUT, MSG_SET, 4, 4},
    {"layoutReset", DG_IMAGE, DAT_IMAGELAYOUT, MSG_RESET, 4, 4},
    {"memoryTransfer", DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET, 6, 7},
    {"nativeTransfer", DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET, 6, 6},
    {"fileTransfer", DG_IMAGE, DAT_IMAGEFILEXFER, MSG_GET, 6, 6},
    {"extendedInfo", DG_IMAGE, DAT_EXTIMAGEINFO, MSG_GET, 7, 7},
};

} // namespace

TEST_P(StateTable, TakesATripletInItsStatesOnly) {
    const auto& [sequence, state] = GetParam();
    ASSERT_NO_FATAL_FAILURE(reachState(state));
    condition();
    alignas(16) std::array<uint8_t, 1024> record{};
    if (sequence.type == DAT_CAPABILITY) {
        const abi::Capability capability{CAP_XFERCOUNT, TWON_ONEVALUE, nullptr};
        std::memcpy(record.data(), &capability, sizeof capability);
    }
    const uint16_t code =
        source->entry(&application, {sequence.group, sequence.type, sequence.message}, &record);
    const bool refusedForItsState = code == TWRC_FAILURE && condition() == TWCC_SEQERROR;
    const bool allowed = state >= sequence.firstState && state <= sequence.lastState;
    EXPECT_EQ(refusedForItsState, !allowed) << sequence.name << " in state " << state;
    abi::Capability answer{};
    std::memcpy(&answer, record.data(), sizeof answer);
    if (code == TWRC_SUCCESS && sequence.type == DAT_CAPABILITY && answer.hContainer != nullptr)
        ScriptedManager::release(answer.hContainer);
    abi::Handle handle = nullptr;
    std::memcpy(&handle, record.data(), sizeof handle);
    if (code == TWRC_XFERDONE && sequence.type == DAT_IMAGENATIVEXFER)
        ScriptedManager::release(handle);
}

INSTANTIATE_TEST_SUITE_P(EveryTriplet,
                         StateTable,
                         testing::Combine(testing::ValuesIn(sequences), testing::Range(3, 8)),
                         [](const auto& sequence) {
                             return std::string(std::get<0>(sequence.param).name) + "InState" +
                                    std::to_string(std::get<1>(sequence.param));
                         });

} // namespace paperline::sources
