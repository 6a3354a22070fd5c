// The software scanner as an application sees it: through the manager, the loader stub and the
// worker process.
#include "tests/sources/software/ManagerScan.h"
#include "sources/software/SoftwareDevice.h"
#include "tests/sources/software/MemorySink.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace paperline::sources {

using namespace twain;

namespace {

const std::filesystem::path buildTree = PAPERLINE_BUILD_TREE;
const std::string product = "Software Scanner";
const std::string smallPages = "resolution=50\nmode=Gray\n";

// Every kind of misbehaviour after which an application can still end the scan.
const char* const endableFaults[] = {
    "enable-fail",     "enable-cancel",    "info-fail@2",
    "info-cancel@3",   "info-hang@1:1",    "setup-fail",
    "strip-fail@1",    "strip-cancel@2",   "strip-small:7",
    "strip-endless:2", "strip-endless@1",  "strip-small:9,strip-break@2",
    "info-width:0",    "info-width:-1",    "info-height:0",
    "info-bits:2",     "info-bits:16",     "info-bits:48",
    "info-samples:9",  "info-resolution",  "info-height:2147483647",
    "strip-outside",   "strip-short",      "strip-long",
    "strip-rows",      "strip-empty@2",    "end-count@3:1",
    "callback-twice",  "callback-late:50", "callback-thread",
    "callback-never",  "callback-close",
};

class SoftwareScannerEndToEnd : public testing::Test {
protected:
    SoftwareScannerEndToEnd() { setenv("PAPERLINE_WORKER_TIMEOUT", "2", 1); }
    ~SoftwareScannerEndToEnd() override { unsetenv("PAPERLINE_WORKER_TIMEOUT"); }

    // Each page as the device itself draws it.
    std::vector<std::vector<uint8_t>> drawn(const std::string& mode, int pages) {
        SoftwareDevice device;
        std::vector<std::vector<uint8_t>> result;
        EXPECT_EQ(device.setOption("resolution", "50"), ScanStatus::good);
        EXPECT_EQ(device.setOption("mode", mode), ScanStatus::good);
        EXPECT_EQ(device.setOption("count", std::to_string(pages)), ScanStatus::good);
        EXPECT_EQ(device.start(), ScanStatus::good);
        MemorySink sink;
        while (device.readPage(sink) == ScanStatus::good)
            result.push_back(sink.bytes);
        return result;
    }
    void expectWholePages(const ScanResult& result, size_t count, const std::string& what) {
        ASSERT_EQ(result.pages.size(), count) << what;
        const auto expected = drawn("Gray", 3);
        for (size_t page = 0; page < count; ++page) {
            EXPECT_EQ(result.pages[page].lastCode, TWRC_XFERDONE) << what;
            EXPECT_EQ(result.pages[page].bytes, expected[page]) << what << " page " << page;
        }
    }

    ManagerScan session;
};

} // namespace

TEST_F(SoftwareScannerEndToEnd, IsOfferedWhenThereIsNoOther) {
    ASSERT_TRUE(session.openManager(buildTree));
    EXPECT_EQ(session.sourceNames(), std::vector<std::string>{product});
}

TEST_F(SoftwareScannerEndToEnd, EveryDepthArrivesAsItWasDrawn) {
    ASSERT_TRUE(session.openManager(buildTree));
    for (const auto& [mode, bits] : {std::pair{"Lineart", 1}, {"Gray", 8}, {"Color", 24}}) {
        const auto result =
            session.scan(product, std::string("resolution=50\ncount=4\nmode=") + mode);
        const auto expected = drawn(mode, 4);
        ASSERT_EQ(result.pages.size(), 4u);
        for (size_t page = 0; page < 4; ++page) {
            EXPECT_EQ(result.pages[page].info.BitsPerPixel, bits);
            EXPECT_EQ(result.pages[page].info.XResolution.Whole, 50);
            EXPECT_EQ(result.pages[page].bytes, expected[page]) << mode << page;
            EXPECT_EQ(result.pages[page].strips, 1);
        }
        EXPECT_EQ(result.lastCount, 0);
        EXPECT_TRUE(result.closed);
    }
}

TEST_F(SoftwareScannerEndToEnd, StoredOptionsCountAndThoseOfTheScanWin) {
    std::filesystem::create_directories(session.folder() / "data/paperline/Device Options");
    std::ofstream(session.folder() / "data/paperline/Device Options/Software Scanner.conf")
        << "resolution=60\ncount=2\n";
    ASSERT_TRUE(session.openManager(buildTree));
    EXPECT_EQ(session.scan(product, "").pages.size(), 2u);
    const auto result = session.scan(product, "count=1");
    ASSERT_EQ(result.pages.size(), 1u);
    EXPECT_EQ(result.pages[0].info.XResolution.Whole, 60);
}

TEST_F(SoftwareScannerEndToEnd, AnOptionThatIsNoneDoesNotOpen) {
    ASSERT_TRUE(session.openManager(buildTree));
    const auto result = session.scan(product, "mode=Sepia");
    EXPECT_EQ(result.openCode, TWRC_FAILURE);
    EXPECT_EQ(result.condition, TWCC_BADVALUE);
    EXPECT_EQ(session.scan(product, smallPages).pages.size(), 3u);
}

TEST_F(SoftwareScannerEndToEnd, PicturesFromAFolder) {
    const auto folder = session.folder() / "pictures";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "one.pgm", std::ios::binary) << "P5 3 2 255\nabcdef";
    ASSERT_TRUE(session.openManager(buildTree));
    const auto result = session.scan(product, "mode=Gray\npages=" + folder.string());
    ASSERT_EQ(result.pages.size(), 1u);
    EXPECT_EQ(result.pages[0].bytes, (std::vector<uint8_t>{'a', 'b', 'c', 'd', 'e', 'f'}));
}

TEST_F(SoftwareScannerEndToEnd, DeviceFaultsKeepTheEarlierPages) {
    ASSERT_TRUE(session.openManager(buildTree));
    struct Case {
        const char* name;
        uint16_t condition;
    };
    for (const auto& [name, condition] : {Case{"device-jam", TWCC_PAPERJAM},
                                          {"device-cover", TWCC_INTERLOCK},
                                          {"device-busy", TWCC_MAXCONNECTIONS},
                                          {"device-denied", TWCC_DENIED},
                                          {"device-offline", TWCC_CHECKDEVICEONLINE},
                                          {"device-error", TWCC_CHECKDEVICEONLINE},
                                          {"device-memory", TWCC_LOWMEMORY},
                                          {"device-invalid", TWCC_BADVALUE},
                                          {"device-unsupported", TWCC_BADVALUE},
                                          {"device-crash", TWCC_OPERATIONERROR},
                                          {"device-hang", conditionWorkerHung}}) {
        const std::string fault = smallPages + "fault=" + name;
        const auto first = session.scan(product, fault + "@1");
        EXPECT_EQ(first.enableCode, TWRC_FAILURE) << name;
        EXPECT_EQ(first.condition, condition) << name;
        EXPECT_TRUE(first.closed) << name;
        const auto last = session.scan(product, fault + "@last");
        expectWholePages(last, 2, name);
        EXPECT_EQ(last.endCode, TWRC_CHECKSTATUS) << name;
        EXPECT_EQ(last.condition, condition) << name;
        EXPECT_EQ(last.lastCount, 0) << name;
        EXPECT_TRUE(last.closed) << name;
    }
    expectWholePages(session.scan(product, smallPages), 3, "after all of them");
}

TEST_F(SoftwareScannerEndToEnd, DeviceFaultsWhileOpening) {
    ASSERT_TRUE(session.openManager(buildTree));
    for (const auto& [name, condition] : {std::pair{"device-denied", TWCC_DENIED},
                                          {"device-crash", TWCC_OPERATIONERROR},
                                          {"device-hang", conditionWorkerHung},
                                          {"device-busy", TWCC_MAXCONNECTIONS}}) {
        const auto result = session.scan(product, smallPages + "fault=" + std::string(name) + "@0");
        EXPECT_EQ(result.openCode, TWRC_FAILURE) << name;
        EXPECT_EQ(result.condition, condition) << name;
    }
    expectWholePages(session.scan(product, smallPages), 3, "after all of them");
}

TEST_F(SoftwareScannerEndToEnd, AnEmptyFeederAndTheCancelButton) {
    ASSERT_TRUE(session.openManager(buildTree));
    auto result = session.scan(product, smallPages + "fault=device-empty@1");
    EXPECT_EQ(result.enableCode, TWRC_FAILURE);
    EXPECT_EQ(result.condition, TWCC_NOMEDIA);
    result = session.scan(product, smallPages + "fault=device-empty@2");
    expectWholePages(result, 1, "empty");
    EXPECT_EQ(result.endCode, TWRC_SUCCESS);
    result = session.scan(product, smallPages + "fault=device-cancel@1");
    EXPECT_EQ(result.enableCode, TWRC_CANCEL);
    result = session.scan(product, smallPages + "fault=device-cancel@3");
    expectWholePages(result, 2, "cancelled");
    EXPECT_EQ(result.endCode, TWRC_CANCEL);
}

// Whatever the source does, a careful application comes out of it with the session intact.
TEST_F(SoftwareScannerEndToEnd, SourceFaultsEndInAClosedSource) {
    ASSERT_TRUE(session.openManager(buildTree));
    for (const std::string fault : endableFaults) {
        const auto result = session.scan(product, smallPages + "fault=" + fault);
        EXPECT_EQ(result.openCode, TWRC_SUCCESS) << fault;
        EXPECT_TRUE(result.closed) << fault;
    }
    expectWholePages(session.scan(product, smallPages + "fault=strip-small:7"), 3, "small strips");
    expectWholePages(session.scan(product, smallPages), 3, "after all of them");
}

// A source that refuses to end cannot be closed; the application's process must still get out of
// it.
TEST_F(SoftwareScannerEndToEnd, ASourceThatRefusesToEndDoesNotHoldTheProcess) {
    for (const std::string fault : {"end-fail@2", "end-cancel@last", "disable-fail", "close-fail"})
        EXPECT_EXIT(
            {
                const bool opened = session.openManager(buildTree);
                const auto result = session.scan(product, smallPages + "fault=" + fault);
                std::exit(opened && !result.closed && !result.pages.empty() ? 0 : 1);
            },
            testing::ExitedWithCode(0),
            "")
            << fault;
}

TEST_F(SoftwareScannerEndToEnd, VanishesBetweenSelectionAndScan) {
    ASSERT_TRUE(session.openManager(buildTree));
    EXPECT_EQ(session.scan(product, smallPages + "fault=vanish").pages.size(), 3u);
    const auto result = session.scan(product, smallPages + "fault=vanish");
    EXPECT_EQ(result.openCode, TWRC_FAILURE);
    EXPECT_EQ(result.condition, TWCC_NODS);
}

TEST_F(SoftwareScannerEndToEnd, WorksWhereverTheTreeIsCopied) {
    const auto copy = session.folder() / "elsewhere with blanks";
    for (const char* part : {"Paperline.app/Contents/Frameworks",
                             "Paperline.app/Contents/Helpers",
                             "TWAIN Data Sources"}) {
        std::filesystem::create_directories((copy / part).parent_path());
        std::filesystem::copy(
            buildTree / part, copy / part, std::filesystem::copy_options::recursive);
    }
    ASSERT_TRUE(session.openManager(copy));
    expectWholePages(session.scan(product, smallPages), 3, "copied");
}

TEST_F(SoftwareScannerEndToEnd, TwoBundlesOfOneLibraryAreTwoSources) {
    const auto bundle = session.folder() / "data/paperline/TWAIN Data Sources/Twin.ds";
    const auto original = buildTree / "TWAIN Data Sources/Software Scanner.ds";
    std::filesystem::create_directories(bundle.parent_path());
    std::filesystem::copy(original, bundle, std::filesystem::copy_options::recursive);
    const auto contents = buildTree / "Paperline.app/Contents";
    std::ofstream(bundle / "Versions/A/Resources/source.conf")
        << "library=" << (contents / "Frameworks/libpaperline-software-source.so").string()
        << "\nworker=" << (contents / "Helpers/paperline-software-worker").string()
        << "\nproduct=Twin\nmanufacturer=Corvane\nfamily=PageCentral\n";
    ASSERT_TRUE(session.openManager(buildTree));
    EXPECT_EQ(session.sourceNames(), (std::vector<std::string>{"Twin", product}));
    std::filesystem::create_directories(session.folder() / "data/paperline/Device Options");
    std::ofstream(session.folder() / "data/paperline/Device Options/Twin.conf") << "count=1\n";
    EXPECT_EQ(session.scan("Twin", smallPages).pages.size(), 1u);
    EXPECT_EQ(session.scan(product, smallPages).pages.size(), 3u);
}

TEST_F(SoftwareScannerEndToEnd, ABundleWithoutItsLibraryIsLeftOut) {
    const auto bundle = session.folder() / "data/paperline/TWAIN Data Sources/Broken.ds";
    std::filesystem::create_directories(bundle.parent_path());
    std::filesystem::copy(buildTree / "TWAIN Data Sources/Software Scanner.ds",
                          bundle,
                          std::filesystem::copy_options::recursive);
    std::ofstream(bundle / "Versions/A/Resources/source.conf")
        << "library=/no/such/library.so\nproduct=Broken\n";
    ASSERT_TRUE(session.openManager(buildTree));
    EXPECT_EQ(session.sourceNames(), std::vector<std::string>{product});
}

} // namespace paperline::sources
