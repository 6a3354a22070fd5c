// Discovery by the worker program as users run it, with SANE's test backends and broken ones.
#include "tests/support/TestFolder.h"
#include "twain/records/StandardRecords.h"
#include "twain/records/TwainConstants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include <dlfcn.h>
#include <sys/wait.h>

namespace paperline::sources {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string contentOf(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Discovery : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(root + "/sane");
        bundles = root + "/data/TWAIN Data Sources";
        configure("test", 2);
        std::ofstream(root + "/sane/pnm.conf");
        std::ofstream(root + "/sane/hanging.conf");
    }

    void configure(const std::string& backends, int testDevices) const {
        std::ofstream(root + "/sane/dll.conf") << backends << "\n";
        std::ofstream(root + "/sane/test.conf")
            << "number_of_devices " << testDevices << "\nresolution 50\n";
    }

    // The exit status; what it prints goes to `output` and `errors`.
    int discover(const std::string& variables = {}) {
        const std::string command = "ulimit -c 0; " + variables + " SANE_CONFIG_DIR='" + root +
                                    "/sane' '" SANE_WORKER "' --discover '" + bundles + "' >'" +
                                    root + "/output' 2>'" + root + "/errors'";
        const int status = std::system(command.c_str());
        output = contentOf(root + "/output");
        errors = contentOf(root + "/errors");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    int describe(const std::string& bundle, const std::string& variables = {}) {
        const std::string command = variables + " SANE_CONFIG_DIR='" + root + "/sane' '" +
                                    DESCRIBE_SOURCE "' '" + bundle + "' >'" + root +
                                    "/output' 2>'" + root + "/errors'";
        const int status = std::system(command.c_str());
        output = contentOf(root + "/output");
        errors = contentOf(root + "/errors");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // Everything in the folder, sorted.
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(bundles, none))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string inBundle(const std::string& product, const std::string& file) const {
        return bundles + "/" + product + ".ds/Versions/A/" + file;
    }

    const testing_support::TestFolder temporary;
    const std::string root = temporary.path();
    std::string bundles, output, errors;
    const std::string first = "Noname frontend-tester";
    const std::string second = "Noname frontend-tester 2";
};

TEST_F(Discovery, MakesABundleForEachDevice) {
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_THAT(entries(), ElementsAre(second + ".ds", first + ".ds"));
    EXPECT_EQ(output, first + "\ttest:0\n" + second + "\ttest:1\n");
    const std::string configuration = contentOf(inBundle(second, "Resources/source.conf"));
    EXPECT_THAT(configuration, HasSubstr("\ndevice=test:1\n"));
    EXPECT_THAT(configuration, HasSubstr("\nproduct=" + second + "\n"));
    EXPECT_THAT(configuration, HasSubstr("\nmanufacturer=Corvane\nfamily=PageCentral\n"));
    EXPECT_THAT(configuration, HasSubstr("/Contents/Frameworks/libpaperline-source.so\n"));
    EXPECT_THAT(contentOf(inBundle(second, "Resources/Info.plist")),
                HasSubstr("<string>" + second + "</string>"));
}

TEST_F(Discovery, ABundleGivesTheIdentityThatItsPropertyListSays) {
    ASSERT_EQ(discover(), 0) << errors;
    for (const std::string& product : {first, second}) {
        void* bundle = dlopen(inBundle(product, "SaneSource").c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(bundle, nullptr) << dlerror();
        using Entry = uint16_t (*)(void*, uint32_t, uint16_t, uint16_t, void*);
        const auto entry = reinterpret_cast<Entry>(dlsym(bundle, "DS_Entry"));
        ASSERT_NE(entry, nullptr);
        twain::abi::Identity identity{};
        EXPECT_EQ(entry(nullptr, twain::DG_CONTROL, twain::DAT_IDENTITY, twain::MSG_GET, &identity),
                  twain::TWRC_SUCCESS);
        EXPECT_EQ(std::string(identity.ProductName), product);
        EXPECT_EQ(std::string(identity.Manufacturer), "Corvane");
        EXPECT_EQ(std::string(identity.ProductFamily), "PageCentral");
    }
}

TEST_F(Discovery, TheOptionsOfABundlesDeviceCanBeListed) {
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_EQ(describe(bundles + "/" + first + ".ds", "PAPERLINE_SOURCE_OPTIONS=resolution=75"), 0);
    EXPECT_EQ(errors, "");
    EXPECT_THAT(output, HasSubstr("mode\tstring\tColor\t\tGray|Color\tScan mode\n"));
    EXPECT_THAT(output, HasSubstr("resolution\tfixed\t75\tdpi\t1..1200 step 1\tScan resolution\n"));
    EXPECT_THAT(output, HasSubstr("tl-x\tfixed\t0\tmm\t0..200 step 1\tTop-left x\n"));
    EXPECT_EQ(describe(bundles + "/" + first + ".ds", "PAPERLINE_SOURCE_OPTIONS=modus=x"), 1);
    EXPECT_EQ(errors, "There is no option \"modus\".\n");
    EXPECT_EQ(describe(root), 1);
    EXPECT_THAT(errors, HasSubstr("no data source"));
}

TEST_F(Discovery, ARefreshChangesNothingThatIsRight) {
    ASSERT_EQ(discover(), 0) << errors;
    std::ofstream(inBundle(first, "cvscan.plist")) << "language";
    const auto before = fs::last_write_time(inBundle(first, "Resources/source.conf"));
    const std::string output1 = output;
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_EQ(output, output1);
    EXPECT_EQ(contentOf(inBundle(first, "cvscan.plist")), "language");
    EXPECT_EQ(fs::last_write_time(inBundle(first, "Resources/source.conf")), before);
}

TEST_F(Discovery, ARefreshMendsABundleAndLeavesWhatTheApplicationWrote) {
    ASSERT_EQ(discover(), 0) << errors;
    const std::string stub = contentOf(inBundle(first, "SaneSource"));
    std::ofstream(inBundle(first, "cvscan.plist")) << "language";
    std::ofstream(inBundle(first, "SaneSource")) << "old";
    fs::remove(inBundle(first, "Resources/Info.plist"));
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_EQ(contentOf(inBundle(first, "SaneSource")), stub);
    EXPECT_TRUE(fs::exists(inBundle(first, "Resources/Info.plist")));
    EXPECT_EQ(contentOf(inBundle(first, "cvscan.plist")), "language");
}

TEST_F(Discovery, BundlesOfDevicesThatAreGoneGo) {
    ASSERT_EQ(discover(), 0) << errors;
    configure("test", 1);
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_THAT(entries(), ElementsAre(first + ".ds"));
    configure("", 1);
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(Discovery, NeverTouchesWhatItDidNotMake) {
    fs::create_directories(bundles + "/Noname frontend-tester.ds/Versions/A/Resources");
    fs::create_directories(bundles + "/Elsewhere.ds");
    std::ofstream(inBundle(first, "Resources/source.conf")) << "worker=/opt/other\ndevice=x\n";
    ASSERT_EQ(discover(), 0) << errors;
    fs::copy(bundles + "/" + second + ".ds", bundles + "/Copy.ds", fs::copy_options::recursive);
    configure("", 0);
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_THAT(entries(), ElementsAre("Copy.ds", "Elsewhere.ds", first + ".ds"));
    EXPECT_EQ(contentOf(inBundle(first, "Resources/source.conf")), "worker=/opt/other\ndevice=x\n");
}

TEST_F(Discovery, ABackendThatCrashesChangesNothing) {
    ASSERT_EQ(discover(), 0) << errors;
    configure("test", 0); // the test backend crashes without devices
    EXPECT_EQ(discover(), 1);
    EXPECT_THAT(errors, HasSubstr("could not be listed"));
    EXPECT_THAT(entries(), ElementsAre(second + ".ds", first + ".ds"));
}

TEST_F(Discovery, OtherBackendsAreHeardWhenOneCrashes) {
    ASSERT_EQ(discover(), 0) << errors;
    configure("test\npnm", 0);
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_THAT(errors, HasSubstr("The driver \"test\" failed"));
    EXPECT_THAT(entries(),
                ElementsAre("Noname PNM file reader 2.ds",
                            "Noname PNM file reader.ds",
                            second + ".ds",
                            first + ".ds"));
}

TEST_F(Discovery, ABackendThatHangsIsLeftBehind) {
    configure("hanging\ntest", 1);
    ASSERT_EQ(discover("PAPERLINE_WORKER_TIMEOUT=1 LD_LIBRARY_PATH='" HANGING_BACKEND_FOLDER "'"),
              0)
        << errors;
    EXPECT_THAT(errors, HasSubstr("The driver \"hanging\" failed"));
    EXPECT_THAT(entries(), ElementsAre(first + ".ds"));
}

TEST_F(Discovery, SeveralAtATimeDoNoHarm) {
    const std::string command = "SANE_CONFIG_DIR='" + root +
                                "/sane' '" SANE_WORKER "' --discover '" + bundles +
                                "' >/dev/null 2>&1";
    std::vector<std::thread> runs;
    std::atomic<int> failures{0};
    for (int i = 0; i < 6; ++i)
        runs.emplace_back([&] {
            for (int round = 0; round < 3; ++round)
                if (std::system(command.c_str()) != 0)
                    ++failures;
        });
    for (std::thread& run : runs)
        run.join();
    EXPECT_EQ(failures, 0);
    EXPECT_THAT(entries(), ElementsAre(second + ".ds", first + ".ds"));
}

TEST_F(Discovery, SweepsAwayWhatABrokenOffRunLeft) {
    fs::create_directories(bundles + "/.paperline-discovery-Half.ds/Versions");
    ASSERT_EQ(discover(), 0) << errors;
    EXPECT_THAT(entries(), ElementsAre(second + ".ds", first + ".ds"));
}

TEST_F(Discovery, TheFolderAppearsWithItsBundles) {
    std::atomic<bool> ended{false};
    std::vector<std::string> found;
    std::thread watcher([&] {
        while (!ended && !fs::exists(bundles)) {
        }
        found = entries();
    });
    EXPECT_EQ(discover(), 0) << errors;
    ended = true;
    watcher.join();
    EXPECT_THAT(found, ElementsAre(second + ".ds", first + ".ds"));
}

TEST_F(Discovery, TheFolderIsThereAfterASearchWithoutScanners) {
    configure("", 0);
    EXPECT_EQ(discover(), 0) << errors;
    EXPECT_TRUE(fs::is_directory(bundles));
    EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(Discovery, AFolderThatCannotBeMadeIsNamed) {
    std::ofstream(root + "/data") << "a file";
    EXPECT_EQ(discover(), 1);
    EXPECT_THAT(errors, HasSubstr(bundles + " cannot be written"));
}

} // namespace
} // namespace paperline::sources
