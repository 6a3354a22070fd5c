#include "output/StagedPages.h"

#include "platform/Files.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

class StagedPages : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(createFolder(path("MultiImage"))); }
    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    const testing_support::TestFolder testFolder_;
    const std::string& folder_ = testFolder_.path();
};

TEST_F(StagedPages, MoveToAFolderOfTheUsers) {
    ASSERT_TRUE(writeFile(path("MultiImage/Image_00001.jpg"), Bytes{1}));
    ASSERT_TRUE(writeFile(path("MultiImage/Image_00002.jpg"), Bytes{2}));
    const KeptPages kept = keepPages(path("MultiImage"), path("data/Kept Pages"), "now");
    EXPECT_EQ(kept.folder, path("data/Kept Pages/now"));
    EXPECT_EQ(kept.moved, 2U);
    EXPECT_EQ(kept.failed, 0U);
    EXPECT_EQ(readFile(path("data/Kept Pages/now/Image_00001.jpg")), Bytes{1});
    EXPECT_EQ(readFile(path("data/Kept Pages/now/Image_00002.jpg")), Bytes{2});
    EXPECT_TRUE(folderEntries(path("MultiImage")).empty());
}

TEST_F(StagedPages, NoPagesMakeNoFolder) {
    const KeptPages kept = keepPages(path("MultiImage"), path("kept"), "now");
    EXPECT_EQ(kept.folder, "");
    EXPECT_FALSE(fileExists(path("kept")));
    EXPECT_EQ(keepPages(path("missing"), path("kept"), "now").folder, "");
}

TEST_F(StagedPages, ASecondBatchOfTheSameMomentGetsAFolderOfItsOwn) {
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{1}));
    (void)keepPages(path("MultiImage"), path("kept"), "now");
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{2}));
    EXPECT_EQ(keepPages(path("MultiImage"), path("kept"), "now").folder, path("kept/now 2"));
    EXPECT_EQ(readFile(path("kept/now/a")), Bytes{1});
    EXPECT_EQ(readFile(path("kept/now 2/a")), Bytes{2});
}

TEST_F(StagedPages, WithoutAFolderThePagesStayWhereTheyAre) {
    ASSERT_TRUE(writeFile(path("MultiImage/a"), Bytes{1}));
    ASSERT_TRUE(writeFile(path("kept"), Bytes{0})); // a file stands in the folder's place
    const KeptPages kept = keepPages(path("MultiImage"), path("kept"), "now");
    EXPECT_EQ(kept.folder, "");
    EXPECT_EQ(kept.failed, 1U);
    EXPECT_EQ(readFile(path("MultiImage/a")), Bytes{1});
}

} // namespace
} // namespace paperline
