// Capabilities: containers byte for byte, what may be set, and what reaches the device.
#include "tests/sources/framework/SourceFixture.h"

namespace paperline::sources {

using namespace twain;

namespace {

class Capabilities : public SourceFixture {
protected:
    void SetUp() override {
        giveEntryPoint();
        ASSERT_EQ(open(), TWRC_SUCCESS);
        feed->calls.clear();
    }
    // The container's bytes as they lie in memory.
    std::vector<uint8_t> get(uint16_t cap, uint16_t message, uint16_t type, size_t size) {
        abi::Capability capability{cap, TWON_DONTCARE16, nullptr};
        EXPECT_EQ(control(DAT_CAPABILITY, message, &capability), TWRC_SUCCESS);
        EXPECT_EQ(capability.ConType, type);
        if (capability.hContainer == nullptr)
            return {};
        const auto* bytes =
            static_cast<const uint8_t*>(ScriptedManager::lock(capability.hContainer));
        std::vector<uint8_t> copy(bytes, bytes + size);
        ScriptedManager::release(capability.hContainer);
        return copy;
    }
    uint16_t set(uint16_t cap, uint16_t containerType, std::vector<uint8_t> bytes) {
        abi::Capability capability{cap, containerType, nullptr};
        capability.hContainer = ScriptedManager::allocate(static_cast<uint32_t>(bytes.size()));
        std::memcpy(ScriptedManager::lock(capability.hContainer), bytes.data(), bytes.size());
        const uint16_t code = control(DAT_CAPABILITY, MSG_SET, &capability);
        ScriptedManager::release(capability.hContainer);
        return code;
    }
    uint16_t setOne(uint16_t cap, uint8_t type, uint8_t low, uint8_t second = 0) {
        return set(cap, TWON_ONEVALUE, {type, 0, low, second, 0, 0});
    }
};

using Bytes = std::vector<uint8_t>;

} // namespace

TEST_F(Capabilities, PixelTypeIsAnEnumeration) {
    // UINT16, three items, current and default the third: 0, 1, 2.
    EXPECT_EQ(get(ICAP_PIXELTYPE, MSG_GET, TWON_ENUMERATION, 20),
              (Bytes{4, 0, 3, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 0, 0, 1, 0, 2, 0}));
    EXPECT_EQ(get(ICAP_PIXELTYPE, MSG_GETCURRENT, TWON_ONEVALUE, 6), (Bytes{4, 0, 2, 0, 0, 0}));
    EXPECT_EQ(setOne(ICAP_PIXELTYPE, 4, 1), TWRC_SUCCESS);
    EXPECT_EQ(feed->calls, std::vector<std::string>{"set mode=Gray"});
    EXPECT_EQ(get(ICAP_PIXELTYPE, MSG_GETCURRENT, TWON_ONEVALUE, 6), (Bytes{4, 0, 1, 0, 0, 0}));
    EXPECT_EQ(get(ICAP_PIXELTYPE, MSG_GETDEFAULT, TWON_ONEVALUE, 6), (Bytes{4, 0, 2, 0, 0, 0}));
    EXPECT_EQ(get(ICAP_BITDEPTH, MSG_GETCURRENT, TWON_ONEVALUE, 6), (Bytes{4, 0, 8, 0, 0, 0}));
    EXPECT_EQ(get(ICAP_PIXELTYPE, MSG_RESET, TWON_ONEVALUE, 6), (Bytes{4, 0, 2, 0, 0, 0}));
}

TEST_F(Capabilities, ResolutionIsARangeOfFixedNumbers) {
    EXPECT_EQ(get(ICAP_XRESOLUTION, MSG_GET, TWON_RANGE, 22),
              (Bytes{7, 0, 50, 0, 0, 0, 0xb0, 4, 0, 0, 1, 0, 0, 0, 0x2c, 1, 0, 0, 0x2c, 1, 0, 0}));
    EXPECT_EQ(setOne(ICAP_XRESOLUTION, 7, 0x90, 1), TWRC_SUCCESS);
    EXPECT_EQ(feed->calls, std::vector<std::string>{"set resolution=400"});
    EXPECT_EQ(get(ICAP_YRESOLUTION, MSG_GETCURRENT, TWON_ONEVALUE, 6),
              (Bytes{7, 0, 0x90, 1, 0, 0}));
    EXPECT_EQ(get(ICAP_XNATIVERESOLUTION, MSG_GET, TWON_ONEVALUE, 6), (Bytes{7, 0, 0xb0, 4, 0, 0}));
}

TEST_F(Capabilities, AListOfResolutionsIsAnEnumeration) {
    feed->descriptors[2] = choiceOption("resolution", "300", {"75", "300"});
    ASSERT_EQ(close(), TWRC_SUCCESS);
    ASSERT_EQ(open(), TWRC_SUCCESS);
    EXPECT_EQ(get(ICAP_XRESOLUTION, MSG_GET, TWON_ENUMERATION, 22),
              (Bytes{7, 0, 2, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 75, 0, 0, 0, 0x2c, 1, 0, 0}));
}

TEST_F(Capabilities, CentimetresChangeLengthsAndResolutions) {
    EXPECT_EQ(get(ICAP_PHYSICALWIDTH, MSG_GET, TWON_ONEVALUE, 6), (Bytes{7, 0, 8, 0, 0, 0x80}));
    EXPECT_EQ(setOne(ICAP_UNITS, 4, 1), TWRC_SUCCESS);
    const auto width = get(ICAP_PHYSICALWIDTH, MSG_GET, TWON_ONEVALUE, 6);
    EXPECT_EQ(width[2], 21); // 21.59 cm
    const auto resolution = get(ICAP_XRESOLUTION, MSG_GETCURRENT, TWON_ONEVALUE, 6);
    EXPECT_EQ(resolution[2], 118); // 118.11 dots per centimetre
    EXPECT_EQ(setOne(ICAP_XRESOLUTION, 7, 100), TWRC_SUCCESS);
    EXPECT_EQ(feed->descriptors[2].value, "254");
    EXPECT_EQ(setOne(ICAP_UNITS, 4, 5), TWRC_FAILURE) << "no pixels";
}

TEST_F(Capabilities, TheFeederIsTheDevicesSource) {
    EXPECT_EQ(get(CAP_FEEDERENABLED, MSG_GET, TWON_ENUMERATION, 18),
              (Bytes{6, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0}));
    EXPECT_EQ(setOne(CAP_FEEDERENABLED, 6, 1), TWRC_SUCCESS);
    EXPECT_EQ(feed->calls, std::vector<std::string>{"set source=Automatic Document Feeder"});
    EXPECT_EQ(get(CAP_FEEDERLOADED, MSG_GETCURRENT, TWON_ONEVALUE, 6), (Bytes{6, 0, 1, 0, 0, 0}));
}

TEST_F(Capabilities, DuplexIsTheFeeder) {
    feed->descriptors = {choiceOption("source", "Duplex", {"Flatbed", "ADF", "Duplex"})};
    ASSERT_EQ(close(), TWRC_SUCCESS);
    ASSERT_EQ(open(), TWRC_SUCCESS);
    EXPECT_EQ(get(CAP_FEEDERENABLED, MSG_GETCURRENT, TWON_ONEVALUE, 6), (Bytes{6, 0, 1, 0, 0, 0}));
    EXPECT_EQ(setOne(CAP_FEEDERENABLED, 6, 0), TWRC_SUCCESS);
    EXPECT_EQ(feed->descriptors[0].value, "Flatbed");
}

TEST_F(Capabilities, SupportedCapsListsEveryOneAndEachCanBeRead) {
    const auto list = get(CAP_SUPPORTEDCAPS, MSG_GET, TWON_ARRAY, 6 + 25 * 2);
    ASSERT_EQ(Bytes(list.begin(), list.begin() + 6), (Bytes{4, 0, 25, 0, 0, 0}));
    for (size_t at = 6; at < list.size(); at += 2) {
        const auto cap = static_cast<uint16_t>(list[at] | list[at + 1] << 8);
        for (const uint16_t message : {MSG_GET, MSG_GETCURRENT, MSG_GETDEFAULT, MSG_QUERYSUPPORT}) {
            abi::Capability capability{cap, TWON_DONTCARE16, nullptr};
            ASSERT_EQ(control(DAT_CAPABILITY, message, &capability), TWRC_SUCCESS) << cap;
            ScriptedManager::release(capability.hContainer);
        }
    }
}

TEST_F(Capabilities, QuerySupportTellsReadableFromSettable) {
    EXPECT_EQ(get(CAP_XFERCOUNT, MSG_QUERYSUPPORT, TWON_ONEVALUE, 6), (Bytes{2, 0, 0x1f, 0, 0, 0}));
    EXPECT_EQ(get(CAP_DEVICEONLINE, MSG_QUERYSUPPORT, TWON_ONEVALUE, 6),
              (Bytes{2, 0, 0x0d, 0, 0, 0}));
}

TEST_F(Capabilities, WrongSettingsAreRefused) {
    abi::Capability unknown{0x7fff, TWON_ONEVALUE, nullptr};
    expectFailure(control(DAT_CAPABILITY, MSG_GET, &unknown), TWCC_CAPUNSUPPORTED);
    expectFailure(control(DAT_CAPABILITY, MSG_QUERYSUPPORT, &unknown), TWCC_CAPUNSUPPORTED);
    abi::Capability none{CAP_XFERCOUNT, TWON_ONEVALUE, nullptr};
    expectFailure(control(DAT_CAPABILITY, MSG_SET, &none), TWCC_BADVALUE);
    expectFailure(control(DAT_CAPABILITY, MSG_PROCESSEVENT, &none), TWCC_BADPROTOCOL);
    expectFailure(setOne(CAP_DEVICEONLINE, 6, 0), TWCC_CAPBADOPERATION);
    expectFailure(setOne(CAP_XFERCOUNT, 1, 0), TWCC_BADVALUE);
    expectFailure(setOne(CAP_XFERCOUNT, 4, 1), TWCC_BADVALUE); // UINT16 where INT16 belongs
    expectFailure(setOne(ICAP_PIXELTYPE, 4, 9), TWCC_BADVALUE);
    expectFailure(setOne(ICAP_XFERMECH, 4, 3), TWCC_BADVALUE);
    expectFailure(set(ICAP_XFERMECH, TWON_ARRAY, {4, 0, 1, 0, 0, 0, 2, 0}), TWCC_BADVALUE);
    // An enumeration whose current item lies outside.
    expectFailure(
        set(ICAP_XFERMECH, TWON_ENUMERATION, {4, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 2, 0}),
        TWCC_BADVALUE);
    EXPECT_TRUE(feed->calls.empty()) << "nothing of this reached the device";
}

TEST_F(Capabilities, OtherContainersSetTheirCurrentItem) {
    EXPECT_EQ(set(ICAP_XFERMECH,
                  TWON_ENUMERATION,
                  {4, 0, 2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0}),
              TWRC_SUCCESS);
    EXPECT_EQ(get(ICAP_XFERMECH, MSG_GETCURRENT, TWON_ONEVALUE, 6), (Bytes{4, 0, 2, 0, 0, 0}));
    EXPECT_EQ(set(ICAP_XRESOLUTION, TWON_RANGE, {7, 0, 0, 0, 0, 0, 0, 0,   0, 0, 0,
                                                 0, 0, 0, 0, 0, 0, 0, 200, 0, 0, 0}),
              TWRC_SUCCESS);
    EXPECT_EQ(feed->descriptors[2].value, "200");
}

TEST_F(Capabilities, TheHighHalfOfANarrowItemMeansNothing) {
    EXPECT_EQ(set(CAP_XFERCOUNT, TWON_ONEVALUE, {1, 0, 0xff, 0xff, 0xcd, 0xcd}), TWRC_SUCCESS);
    EXPECT_EQ(get(CAP_XFERCOUNT, MSG_GETCURRENT, TWON_ONEVALUE, 6),
              (Bytes{1, 0, 0xff, 0xff, 0xff, 0xff}));
}

TEST_F(Capabilities, ResetAllGoesBackToTheDefaults) {
    ASSERT_EQ(setOne(CAP_XFERCOUNT, 1, 3), TWRC_SUCCESS);
    ASSERT_EQ(setOne(ICAP_PIXELTYPE, 4, 0), TWRC_SUCCESS);
    ASSERT_EQ(setOne(ICAP_XRESOLUTION, 7, 100), TWRC_SUCCESS);
    abi::Capability all{};
    ASSERT_EQ(control(DAT_CAPABILITY, MSG_RESETALL, &all), TWRC_SUCCESS);
    EXPECT_EQ(feed->descriptors[0].value, "Color");
    EXPECT_EQ(feed->descriptors[2].value, "300");
    EXPECT_EQ(get(CAP_XFERCOUNT, MSG_GETCURRENT, TWON_ONEVALUE, 6),
              (Bytes{1, 0, 0xff, 0xff, 0xff, 0xff}));
}

TEST_F(Capabilities, ADeviceThatRefusesIsBelieved) {
    feed->setStatus = ScanStatus::invalid;
    expectFailure(setOne(ICAP_PIXELTYPE, 4, 0), TWCC_BADVALUE);
    ScriptedManager::outOfMemory = true;
    abi::Capability capability{ICAP_UNITS, 0, nullptr};
    expectFailure(control(DAT_CAPABILITY, MSG_GET, &capability), TWCC_LOWMEMORY);
}

TEST_F(Capabilities, ADeviceWithoutOptionsStillAnswers) {
    feed->descriptors.clear();
    ASSERT_EQ(close(), TWRC_SUCCESS);
    ASSERT_EQ(open(), TWRC_SUCCESS);
    EXPECT_EQ(get(ICAP_PIXELTYPE, MSG_GET, TWON_ENUMERATION, 16),
              (Bytes{4, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0}));
    EXPECT_EQ(get(CAP_FEEDERENABLED, MSG_GET, TWON_ENUMERATION, 16),
              (Bytes{6, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    const auto width = get(ICAP_PHYSICALWIDTH, MSG_GET, TWON_ONEVALUE, 6);
    EXPECT_EQ(width[2], 8);
}

} // namespace paperline::sources
