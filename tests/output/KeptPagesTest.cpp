#include "output/KeptPages.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/FileTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

class KeptPagesTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(createFolder(path("MultiImage"))); }
    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    const testing_support::TestFolder testFolder_;
    const std::string& folder_ = testFolder_.path();
};

TEST_F(KeptPagesTest, MoveToAFolderOfTheUsers) {
    ASSERT_TRUE(writeFile(path("MultiImage/Image_00001.jpg"), Bytes{1}));
    ASSERT_TRUE(writeFile(path("MultiImage/Image_00002.jpg"), Bytes{2}));
    const KeptPages kept = keepPages(path("MultiImage"), path("data/Kept Pages/now"));
    EXPECT_EQ(kept.folder, path("data/Kept Pages/now"));
    EXPECT_EQ(kept.moved, 2U);
    EXPECT_EQ(kept.failed, 0U);
    EXPECT_EQ(readFile(path("data/Kept Pages/now/Image_00001.jpg")), Bytes{1});
    EXPECT_EQ(readFile(path("data/Kept Pages/now/Image_00002.jpg")), Bytes{2});
    EXPECT_TRUE(folderEntries(path("MultiImage")).empty());
}

TEST_F(KeptPagesTest, NoPagesMakeNoFolder) {
    const KeptPages kept = keepPages(path("MultiImage"), path("kept/now"));
    EXPECT_EQ(kept.folder, "");
    EXPECT_FALSE(fileExists(path("kept")));
    EXPECT_EQ(keepPages(path("missing"), path("kept/now")).folder, "");
}

TEST_F(KeptPagesTest, ASecondBatchOfTheSameMomentGetsAFolderOfItsOwn) {
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{1}));
    (void)keepPages(path("MultiImage"), path("kept/now"));
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{2}));
    EXPECT_EQ(keepPages(path("MultiImage"), path("kept/now")).folder, path("kept/now 2"));
    EXPECT_EQ(readFile(path("kept/now/a")), Bytes{1});
    EXPECT_EQ(readFile(path("kept/now 2/a")), Bytes{2});
}

TEST_F(KeptPagesTest, WithoutAFolderThePagesStayWhereTheyAre) {
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{1}));
    ASSERT_TRUE(writeFile(path("kept"), Bytes{0})); // a file stands in the folder's place
    const KeptPages kept = keepPages(path("MultiImage"), path("kept/now"));
    EXPECT_EQ(kept.folder, "");
    EXPECT_EQ(kept.failed, 1U);
    EXPECT_EQ(kept.leftFolder, path("MultiImage"));
    EXPECT_EQ(readFile(path("MultiImage/a")), Bytes{1});
}

// No file system takes a new folder there, not even from root.
constexpr const char* readOnlyPlace = "/proc/Kept Pages/now";

TEST_F(KeptPagesTest, ThatCannotBeMovedAreSetAsideForTheNextBatch) {
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{1}));
    const KeptPages kept = keepStaged(path("MultiImage"), readOnlyPlace);
    EXPECT_EQ(kept.folder, "");
    EXPECT_EQ(kept.leftFolder, path("MultiImage now"));
    EXPECT_EQ(kept.failed, 1U);
    EXPECT_EQ(readFile(path("MultiImage now/a")), Bytes{1});
    EXPECT_FALSE(fileExists(path("MultiImage")));
    // The next batch, within the same second.
    ASSERT_TRUE(createFolder(path("MultiImage")));
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{2}));
    EXPECT_EQ(keepStaged(path("MultiImage"), readOnlyPlace).leftFolder, path("MultiImage now 2"));
    EXPECT_EQ(readFile(path("MultiImage now/a")), Bytes{1});
    EXPECT_EQ(readFile(path("MultiImage now 2/a")), Bytes{2});
}

TEST_F(KeptPagesTest, ThatFitNowhereAreLeftWhileTheOthersAreKept) {
    // On another file system: within one a move needs no room.
    const testing_support::TestFolder elsewhere("/dev/shm");
    const std::string staging = elsewhere / "MultiImage";
    ASSERT_TRUE(createFolder(staging));
    ASSERT_TRUE(writeFile(staging + "/large", Bytes(1'000'000, 1)));
    ASSERT_TRUE(writeFile(staging + "/small", Bytes(1'000, 2)));
    testing_support::inChild([&staging] { // which may have to limit itself
        const testing_support::SmallDisk disk(256);
        const KeptPages kept = keepStaged(staging, disk / "kept/now");
        EXPECT_EQ(kept.moved, 1U);
        EXPECT_EQ(kept.failed, 1U);
        EXPECT_EQ(kept.folder, disk / "kept/now");
        EXPECT_EQ(kept.leftFolder, staging + " now");
        EXPECT_EQ(folderEntries(kept.folder), std::vector<std::string>{"small"});
    });
    EXPECT_EQ(readFile(staging + " now/large"), Bytes(1'000'000, 1));
}

TEST_F(KeptPagesTest, SetAsideAreTriedAgain) {
    ASSERT_TRUE(createFolder(path("MultiImage earlier")));
    ASSERT_TRUE(writeFile(path("MultiImage earlier/a"), Bytes{1}));
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{2}));
    for (const KeptPages& kept : keepAllPages(path("MultiImage"), readOnlyPlace))
        EXPECT_EQ(kept.failed, 1U);
    EXPECT_FALSE(removeAllButPages(path("MultiImage")));
    EXPECT_EQ(readFile(path("MultiImage earlier/a")), Bytes{1});
    EXPECT_EQ(readFile(path("MultiImage now/a")), Bytes{2});

    for (const KeptPages& kept : keepAllPages(path("MultiImage"), path("kept/then")))
        EXPECT_EQ(kept.failed, 0U);
    const bool inOrder = readFile(path("kept/then/a")) == Bytes{1};
    EXPECT_EQ(readFile(path(inOrder ? "kept/then/a" : "kept/then 2/a")), Bytes{1});
    EXPECT_EQ(readFile(path(inOrder ? "kept/then 2/a" : "kept/then/a")), Bytes{2});
}

TEST_F(KeptPagesTest, AreAllThatStaysOfTheTemporaryFolder) {
    const auto root = [this](const std::string& name) { return path("root/" + name); };
    for (const char* name : {"MultiImage", "MultiImage_Scale", "MultiImage now", "MultiImage old"})
        ASSERT_TRUE(createFolderWithParents(root(name)));
    for (const char* name : {"MultiImage/a", "MultiImage_Scale/a", "MultiImage now/a", "TmpImage"})
        ASSERT_TRUE(writeFile(root(name), Bytes{1}));
    EXPECT_FALSE(removeAllButPages(root("MultiImage")));
    EXPECT_THAT(deepFolderEntries(path("root")),
                testing::UnorderedElementsAre(
                    "MultiImage", "MultiImage/a", "MultiImage now", "MultiImage now/a"));
    ASSERT_TRUE(removePath(root("MultiImage/a")));
    ASSERT_TRUE(removePath(root("MultiImage now/a")));
    EXPECT_TRUE(removeAllButPages(root("MultiImage")));
    EXPECT_FALSE(fileExists(path("root")));
    EXPECT_TRUE(removeAllButPages(root("MultiImage"))) << "nothing is there";
}

TEST_F(KeptPagesTest, AreNeverLookedForThroughALink) {
    ASSERT_TRUE(writeFile(path("MultiImage/mine"), Bytes{1}));
    ASSERT_TRUE(writeFile(path("letter"), Bytes{2}));
    const testing_support::TestFolder other;
    ASSERT_EQ(::symlink(folder_.c_str(), (other / "root").c_str()), 0);
    EXPECT_TRUE(keepAllPages(other / "root/MultiImage", path("kept/now")).empty());
    EXPECT_TRUE(removeAllButPages(other / "root/MultiImage"));
    EXPECT_FALSE(fileExists(other / "root"));
    EXPECT_EQ(readFile(path("MultiImage/mine")), Bytes{1});
    EXPECT_EQ(readFile(path("letter")), Bytes{2});
}

// A folder in which nothing can be renamed: root goes without its rights for this.
TEST_F(KeptPagesTest, ThatCannotEvenBeSetAsideStay) {
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{1}));
    ASSERT_EQ(::chmod(path("MultiImage").c_str(), 0555), 0);
    ASSERT_EQ(::chmod(folder_.c_str(), 0555), 0);
    testing_support::inChild([this] {
        const bool isRoot = ::geteuid() == 0;
        ASSERT_TRUE(!isRoot || ::setresuid(65534, 65534, 65534) == 0);
        const KeptPages kept = keepStaged(path("MultiImage"), readOnlyPlace);
        EXPECT_EQ(kept.leftFolder, path("MultiImage"));
        EXPECT_FALSE(removeAllButPages(path("MultiImage")));
    });
    ASSERT_EQ(::chmod(folder_.c_str(), 0755), 0);
    ASSERT_EQ(::chmod(path("MultiImage").c_str(), 0755), 0);
    EXPECT_EQ(readFile(path("MultiImage/a")), Bytes{1});
}

} // namespace
} // namespace paperline
