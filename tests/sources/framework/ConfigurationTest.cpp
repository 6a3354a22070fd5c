// Bundles' configuration and the option lines of users and of one scan.
#include "sources/framework/OptionLines.h"
#include "sources/framework/SourceConfiguration.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace paperline::sources {

namespace {

class Configuration : public testing::Test {
protected:
    Configuration() {
        setenv("XDG_DATA_HOME", folder.c_str(), 1);
        unsetenv("PAPERLINE_SOURCE_OPTIONS");
    }
    ~Configuration() override {
        unsetenv("XDG_DATA_HOME");
        unsetenv("PAPERLINE_SOURCE_OPTIONS");
    }
    void write(const std::string& path, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    std::string bundle() const { return folder + "/A.ds"; }
    std::string conf() const { return bundle() + "/Versions/A/Resources/source.conf"; }

    const testing_support::TestFolder temporary;
    const std::string folder = temporary.path();
};

using Settings = std::vector<OptionSetting>;

} // namespace

TEST_F(Configuration, StoredOptionsAndThoseOfThisScan) {
    write(folder + "/paperline/Device Options/A_B.conf", "mode=Gray\nresolution=200\n");
    setenv("PAPERLINE_SOURCE_OPTIONS", "mode=Color\ncount=2", 1);
    EXPECT_EQ(storedOptions("A/B"), (Settings{{"mode", "Gray"}, {"resolution", "200"}}));
    EXPECT_EQ(scanOptions(), (Settings{{"mode", "Color"}, {"count", "2"}}));
    EXPECT_TRUE(storedOptions("Other").empty());
    EXPECT_TRUE(storedOptions("").empty());
}

TEST_F(Configuration, PathsStartAtTheBundle) {
    write(conf(),
          "library=../lib/x.so\nworker=reader\nhelpers=../bin\nproduct=P\nmanufacturer=M\n"
          "family=F\ndevice=net:1.2.3.4:a=b\n");
    const auto read = readSourceConfiguration(bundle());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->worker, bundle() + "/../bin/reader");
    EXPECT_EQ(read->device, "net:1.2.3.4:a=b");
    EXPECT_EQ(read->product, "P");
    EXPECT_EQ(read->manufacturer, "M");
    EXPECT_EQ(read->family, "F");
    write(conf(), "library=/l.so\nworker=/w\nproduct=P\n");
    EXPECT_EQ(readSourceConfiguration(bundle())->worker, "/w");
    write(conf(), "worker=sub/w\nproduct=P\n");
    EXPECT_EQ(readSourceConfiguration(bundle())->worker, bundle() + "/sub/w");
}

TEST_F(Configuration, ABundleWithoutProductIsNone) {
    EXPECT_FALSE(readSourceConfiguration(bundle()));
    write(conf(), "library=/l.so\n");
    EXPECT_FALSE(readSourceConfiguration(bundle()));
}

TEST_F(Configuration, AHugeFileIsNotRead) {
    write(conf(), "product=P\n" + std::string((1 << 20), '#'));
    EXPECT_FALSE(readSourceConfiguration(bundle()));
}

} // namespace paperline::sources
