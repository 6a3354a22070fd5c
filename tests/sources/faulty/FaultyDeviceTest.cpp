// The faulty scanner as a device: an option more than the software scanner, and the pages it fails
// on.
#include "tests/sources/faulty/FaultyDevice.h"
#include "tests/sources/software/MemorySink.h"

#include <gtest/gtest.h>

namespace paperline::sources {

namespace {

class FaultyDeviceTest : public testing::Test {
protected:
    FaultyDeviceTest() { set("resolution", "50"); }

    void set(const std::string& name, const std::string& value) {
        ASSERT_EQ(device.setOption(name, value), ScanStatus::good) << name << '=' << value;
    }
    // The statuses of a whole batch, its end included.
    std::vector<ScanStatus> batch() {
        std::vector<ScanStatus> statuses{device.start()};
        while (statuses.back() == ScanStatus::good)
            statuses.push_back(device.readPage(sink));
        device.stop();
        return statuses;
    }

    FaultyDevice device;
    MemorySink sink;
};

} // namespace

TEST_F(FaultyDeviceTest, HasTheSoftwareScannersOptionsAndItsFaults) {
    auto options = device.options();
    EXPECT_EQ(options.back().name, "fault");
    EXPECT_EQ(options.size(), SoftwareDevice().options().size() + 1);
    EXPECT_EQ(device.setOption("fault", "explode"), ScanStatus::invalid);
    EXPECT_EQ(device.errorText(), "There is no such fault.");
    EXPECT_EQ(device.setOption("mode", "Sepia"), ScanStatus::invalid);
    EXPECT_EQ(device.errorText(), "");
    set("fault", "device-jam@9");
    EXPECT_EQ(device.options().back().value, "device-jam@9");
}

TEST_F(FaultyDeviceTest, MisbehavesOnTheNamedPage) {
    using enum ScanStatus;
    const std::vector<std::pair<std::string, ScanStatus>> faults{
        {"device-jam", paperJam},
        {"device-cover", coverOpen},
        {"device-empty", noMorePages},
        {"device-busy", deviceBusy},
        {"device-denied", accessDenied},
        {"device-offline", noSuchDevice},
        {"device-error", ioError},
        {"device-memory", noMemory},
        {"device-invalid", invalid},
        {"device-unsupported", unsupported},
        {"device-cancel", cancelled},
    };
    for (const auto& [name, status] : faults) {
        set("fault", name + "@first");
        EXPECT_EQ(batch(), (std::vector{good, status})) << name;
        set("fault", name + "@middle");
        EXPECT_EQ(batch(), (std::vector{good, good, status})) << name;
        set("fault", name + "@last");
        EXPECT_EQ(batch(), (std::vector{good, good, good, status})) << name;
        set("fault", name + "@4");
        EXPECT_EQ(batch(), (std::vector{good, good, good, good, noMorePages})) << name;
        EXPECT_EQ(device.setOption("fault", name + "@0"), status) << "while opening";
        EXPECT_FALSE(device.errorText().empty());
    }
    set("fault", "");
    EXPECT_EQ(batch(), (std::vector{good, good, good, good, noMorePages}));
}

TEST_F(FaultyDeviceTest, CrashesWhenAsked) {
    set("fault", "device-crash@2");
    ASSERT_EQ(device.start(), ScanStatus::good);
    ASSERT_EQ(device.readPage(sink), ScanStatus::good);
    EXPECT_EXIT(static_cast<void>(device.readPage(sink)), testing::KilledBySignal(SIGABRT), "");
}

} // namespace paperline::sources
