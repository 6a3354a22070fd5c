#include "platform/places/Places.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "tests/support/FileTesting.h"

#include <sys/stat.h>

namespace paperline {
namespace {

using namespace testing_support;

class ScratchRoot : public testing::Test {
protected:
    ScratchRoot() {
        environment_.set("PAPERLINE_SCRATCH", folder_ / "scratch");
        environment_.set("XDG_CACHE_HOME", folder_ / "cache");
        environment_.set("TMPDIR", folder_ / "temporary");
        EXPECT_TRUE(createFolderWithParents(folder_ / "scratch/tmp"));
    }
    ~ScratchRoot() override { removeOwnScratchRoot(); }

    // Chooses for the window and gives the root, or the error.
    std::string windowRoot() {
        std::string error;
        return chooseScratchRoot(ScratchKind::sharedTmp, error) ? scratchRoot() : "error: " + error;
    }

    TestFolder folder_;
    TestEnvironment environment_;
};

TEST_F(ScratchRoot, IsTmpUntilChosen) {
    environment_.set("PAPERLINE_SCRATCH", std::nullopt);
    EXPECT_EQ(scratchRoot(), "/tmp");
    EXPECT_EQ(scratchPath("/tmp/CorvaneTempImage"), "/tmp/CorvaneTempImage");
    EXPECT_EQ(scratchPath("/tmp"), "/tmp");
}

TEST_F(ScratchRoot, StandsBehindTheTestsFolder) {
    EXPECT_TRUE(removePath(folder_ / "scratch"));
    EXPECT_EQ(windowRoot(), folder_ / "scratch/tmp");
    EXPECT_TRUE(folderExists(folder_ / "scratch/tmp"));
    EXPECT_EQ(scratchPath("/tmp/1.jpg"), folder_ / "scratch/tmp/1.jpg");
    EXPECT_EQ(scratchPath("/tmp"), folder_ / "scratch/tmp");
    EXPECT_EQ(scratchPath("/tmpfs/x"), "/tmpfs/x");
    EXPECT_EQ(scratchPath("/home/x"), "/home/x");
}

TEST_F(ScratchRoot, StaysWhenTheNamesAreOurs) {
    ASSERT_TRUE(createFolder(folder_ / "scratch/tmp/CorvaneTempImage"));
    ASSERT_TRUE(put(folder_ / "scratch/tmp/1.jpg", "x"));
    EXPECT_EQ(windowRoot(), folder_ / "scratch/tmp");
}

TEST_F(ScratchRoot, MovesToTheCacheWhenAnotherUserHasAName) {
    for (const char* name : {"CorvaneTempImage", "CPL_image.bmp", "1.jpg"}) {
        const std::string path = folder_ / "scratch/tmp/" + name;
        ASSERT_TRUE(std::string(name) == "CorvaneTempImage" ? createFolder(path) : put(path, "x"));
        asAnotherUsers(path, [&] {
            EXPECT_EQ(windowRoot(), folder_ / "cache/paperline/scratch") << name;
            EXPECT_EQ(scratchPath("/tmp"), folder_ / "cache/paperline/scratch");
        });
        struct stat status = {};
        ASSERT_EQ(::stat((folder_ / "cache/paperline/scratch").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0700U);
        ASSERT_TRUE(removePath(path));
    }
}

TEST_F(ScratchRoot, MovesToTheCacheWhenANameIsALink) {
    for (const char* name : {"CorvaneTempImage", "CPL_image.bmp", "1.jpg"}) {
        const std::string path = folder_ / "scratch/tmp/" + name;
        ASSERT_EQ(::symlink("elsewhere", path.c_str()), 0);
        EXPECT_EQ(windowRoot(), folder_ / "cache/paperline/scratch") << name;
        ASSERT_TRUE(removePath(path));
    }
}

TEST_F(ScratchRoot, SaysWhyThereIsNone) {
    ASSERT_EQ(::symlink("x", (folder_ / "scratch/tmp/1.jpg").c_str()), 0);
    ASSERT_TRUE(put(folder_ / "cache", "a file where the cache should be"));
    std::string error;
    EXPECT_FALSE(chooseScratchRoot(ScratchKind::sharedTmp, error));
    EXPECT_NE(error.find(folder_ / "cache/paperline/scratch"), std::string::npos) << error;
    environment_.set("XDG_CACHE_HOME", std::nullopt);
    environment_.set("HOME", std::nullopt);
    EXPECT_FALSE(chooseScratchRoot(ScratchKind::sharedTmp, error));
    EXPECT_NE(error.find("XDG_CACHE_HOME"), std::string::npos) << error;
}

TEST_F(ScratchRoot, OfTheCommandLineIsFreshAndGoesAtTheEnd) {
    environment_.set("PAPERLINE_SCRATCH", std::nullopt);
    ASSERT_TRUE(createFolder(folder_ / "temporary"));
    std::string error;
    ASSERT_TRUE(chooseScratchRoot(ScratchKind::ownFolder, error)) << error;
    const std::string root = scratchRoot();
    EXPECT_EQ(folderOfPath(root), folder_ / "temporary");
    struct stat status = {};
    ASSERT_EQ(::stat(root.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    ASSERT_TRUE(put(scratchPath("/tmp/1.jpg"), "x"));
    EXPECT_TRUE(fileExists(root + "/1.jpg"));
    removeOwnScratchRoot();
    EXPECT_FALSE(fileExists(root));
    removeOwnScratchRoot();
}

TEST_F(ScratchRoot, OfTheCommandLineLiesBelowTheTestsFolder) {
    std::string error;
    ASSERT_TRUE(chooseScratchRoot(ScratchKind::ownFolder, error)) << error;
    EXPECT_EQ(folderOfPath(scratchRoot()), folder_ / "scratch/tmp");
    environment_.set("PAPERLINE_SCRATCH", std::nullopt);
    EXPECT_FALSE(chooseScratchRoot(ScratchKind::ownFolder, error));
    EXPECT_NE(error.find(folder_ / "temporary"), std::string::npos) << error;
}

TEST_F(ScratchRoot, OfTheWindowIsNotRemoved) {
    EXPECT_EQ(windowRoot(), folder_ / "scratch/tmp");
    removeOwnScratchRoot();
    EXPECT_TRUE(folderExists(folder_ / "scratch/tmp"));
}

TEST(Places, PutTheTestsRootInFront) {
    TestEnvironment environment;
    environment.set("PAPERLINE_ROOT", "/elsewhere");
    EXPECT_EQ(systemPlace("/tmp/DrvLog"), "/elsewhere/tmp/DrvLog");
    environment.set("PAPERLINE_ROOT", std::nullopt);
    EXPECT_EQ(systemPlace("/tmp/DrvLog"), "/tmp/DrvLog");
}

TEST(Places, FindTheBundleOfTheBuildTree) {
    // This program is no bundle; the one above it in the build tree counts.
    const std::string bundle = bundlePath();
    EXPECT_EQ(lastPathComponent(bundle), "Paperline.app") << bundle;
    EXPECT_TRUE(folderExists(bundle));
    EXPECT_EQ(resourcePath(), bundle + "/Contents/Resources");
}

// What the probe prints when it runs from `program`.
std::string bundleSeenFrom(const std::string& program) {
    EXPECT_TRUE(createFolderWithParents(folderOfPath(program)));
    EXPECT_TRUE(copyFile(PAPERLINE_BUNDLE_PROBE, program));
    std::string line;
    if (FILE* output = ::popen(("'" + program + "'").c_str(), "r")) {
        for (int c = std::fgetc(output); c != EOF && c != '\n'; c = std::fgetc(output))
            line += static_cast<char>(c);
        ::pclose(output);
    }
    return line;
}

TEST(Places, FindTheBundleAroundTheProgram) {
    const TestFolder folder;
    EXPECT_EQ(bundleSeenFrom(folder / "Some Name.app/Contents/MACOS/probe"),
              folder / "Some Name.app");
    EXPECT_EQ(bundleSeenFrom(folder / "Some Name.app/Contents/Helpers/deep/probe"),
              folder / "Some Name.app");
    EXPECT_EQ(bundleSeenFrom(folder / "lone/probe"), folder / "lone");
    ASSERT_TRUE(createFolder(folder / "Paperline.app"));
    EXPECT_EQ(bundleSeenFrom(folder / "tests/unit/probe"), folder / "Paperline.app");
}

TEST(Places, ListSourceFoldersInOrder) {
    const TestFolder folder;
    TestEnvironment environment;
    environment.set("PAPERLINE_ROOT", folder.path());
    environment.set("XDG_DATA_HOME", folder / "data");
    const std::string before = bundlePath();
    ASSERT_TRUE(createFolderWithParents(folder / "tree/Paperline.app"));
    setBundlePath(folder / "tree/Paperline.app");
    EXPECT_EQ(buildTreeFolder(), "");
    ASSERT_TRUE(createFolder(folder / "tree/TWAIN Data Sources"));
    EXPECT_EQ(buildTreeFolder(), folder / "tree");
    EXPECT_EQ(userDataFolder(), folder / "data/paperline");
    EXPECT_EQ(dataSourceFolders(),
              (std::vector<std::string>{folder / "Library/Image Capture/TWAIN Data Sources",
                                        folder / "data/paperline/TWAIN Data Sources",
                                        folder / "tree/TWAIN Data Sources"}));
    setBundlePath(before);
}

} // namespace
} // namespace paperline
