#include "sources/worker/OptionSettings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace paperline::sources {
namespace {

// Takes "mode" and "size", refuses everything else.
class TwoOptions final : public ScanDevice {
public:
    ScanStatus open() override { return ScanStatus::good; }
    std::vector<OptionDescriptor> options() override {
        OptionDescriptor mode, locked;
        mode.name = "mode";
        locked.name = "locked";
        return {mode, locked};
    }
    ScanStatus setOption(const std::string& name, const std::string& value) override {
        if (name != "mode")
            return ScanStatus::unsupported;
        taken += value + ";";
        return ScanStatus::good;
    }
    ScanStatus start() override { return ScanStatus::good; }
    ScanStatus readPage(PageSink&) override { return ScanStatus::noMorePages; }
    void cancel() override {}
    void stop() override {}
    std::string errorText() const override { return "No."; }
    std::string taken;
};

class OptionSettingsTest : public testing::Test {
protected:
    void SetUp() override {
        folder = (std::filesystem::temp_directory_path() / "paperline-options-XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        setenv("XDG_DATA_HOME", folder.c_str(), 1);
        unsetenv("PAPERLINE_SOURCE_OPTIONS");
    }
    void TearDown() override {
        std::filesystem::remove_all(folder);
        unsetenv("XDG_DATA_HOME");
        unsetenv("PAPERLINE_SOURCE_OPTIONS");
    }
    void store(const std::string& product, const std::string& lines) {
        std::filesystem::create_directories(folder + "/paperline/Device Options");
        std::ofstream(storedOptionsPath(product)) << lines;
    }
    std::string folder;
    TwoOptions device;
    std::string error;
};

TEST_F(OptionSettingsTest, LinesAreNamesAndValues) {
    const std::vector<OptionSetting> expected{
        {"mode", "Color"}, {"name", " a=b "}, {"button", ""}, {"last", "1"}};
    EXPECT_EQ(parseOptionSettings("mode=Color\n\n# note=1\n name = a=b \r\nbutton\nlast=1"),
              expected);
    EXPECT_TRUE(parseOptionSettings("").empty());
}

TEST_F(OptionSettingsTest, TheFileIsNamedAfterTheProduct) {
    EXPECT_EQ(storedOptionsPath("Noname A/B"),
              folder + "/paperline/Device Options/Noname A_B.conf");
    EXPECT_EQ(storedOptionsPath(""), "");
}

TEST_F(OptionSettingsTest, StoredComeFirstAndTheirFaultsAreLeftOut) {
    store("Noname", "mode=a\nunknown=1\nlocked=1\nmode=b\n");
    setenv("PAPERLINE_SOURCE_OPTIONS", "mode=c", 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(applyOptionSettings(device, "Noname", error), ScanStatus::good);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Noname: stored option left out: There is no option \"unknown\".\n"
              "Noname: stored option left out: The option \"locked\" does not take \"1\". No.\n");
    EXPECT_EQ(device.taken, "a;b;c;");
}

TEST_F(OptionSettingsTest, AFaultOfThisScanEndsIt) {
    setenv("PAPERLINE_SOURCE_OPTIONS", "mode=a\nlocked=1\nmode=b", 1);
    EXPECT_EQ(applyOptionSettings(device, "Noname", error), ScanStatus::unsupported);
    EXPECT_EQ(error, "The option \"locked\" does not take \"1\". No.");
    EXPECT_EQ(device.taken, "a;");
}

} // namespace
} // namespace paperline::sources
