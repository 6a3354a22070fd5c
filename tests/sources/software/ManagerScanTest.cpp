// The software scanner as an application sees it: through the manager, the loader stub and the
// worker process.
#include "tests/sources/software/ManagerScan.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace paperline::sources {

using namespace twain;

namespace {

const std::filesystem::path buildTree = PAPERLINE_BUILD_TREE;
const std::string product = "Software Scanner";
class SoftwareScannerEndToEnd : public testing::Test {
protected:
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
        const auto expected = drawnPages(mode, 4);
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
        << "library=" << (contents / "Frameworks/libpaperline-source.so").string()
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
