#include "sources/worker/PageBuffer.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace paperline::sources {
namespace {

PageFormat pageOf(int32_t width, int32_t height, int bits) {
    PageFormat format;
    format.widthPixels = width;
    format.heightPixels = height;
    format.bitsPerPixel = bits;
    return format;
}

class PageBufferTest : public testing::Test {
protected:
    int calls = 0;
    PageBuffer page{[this] { ++calls; }};
};

TEST_F(PageBufferTest, GivesRoomForTheRowsOfThePageOnly) {
    ASSERT_TRUE(page.begin(pageOf(10, 4, 1)));
    EXPECT_EQ(page.rows(0, 4).size(), 8u);
    EXPECT_EQ(page.rows(3, 1).size(), 2u);
    EXPECT_EQ(page.rows(1, 1).data(), page.rows(0, 1).data() + 2);
    EXPECT_TRUE(page.rows(3, 2).empty());
    EXPECT_TRUE(page.rows(-1, 1).empty());
    EXPECT_TRUE(page.rows(0, 0).empty());
    EXPECT_TRUE(page.rows(INT32_MAX, INT32_MAX).empty());
}

TEST_F(PageBufferTest, ShowsEverySignOfLife) {
    ASSERT_TRUE(page.begin(pageOf(10, 4, 8)));
    (void)page.rows(0, 1);
    page.finish(4);
    EXPECT_EQ(calls, 3);
}

TEST_F(PageBufferTest, RefusesImpossiblePages) {
    EXPECT_FALSE(page.begin(pageOf(0, 4, 8)));
    EXPECT_FALSE(page.begin(pageOf(4, 0, 8)));
    EXPECT_FALSE(page.begin(pageOf(4, -2, 8)));
    EXPECT_FALSE(page.begin(pageOf(4, 4, 16)));
    EXPECT_FALSE(page.begin(pageOf(INT32_MAX, INT32_MAX, 24)));
}

TEST_F(PageBufferTest, KeepsWhatWasWrittenWhenItGrows) {
    ASSERT_TRUE(page.begin(pageOf(1000, -1, 8)));
    page.rows(0, 1)[0] = 7;
    ASSERT_EQ(page.rows(100000, 1).size(), 1000u);
    EXPECT_EQ(page.rows(0, 1)[0], 7);
    page.finish(100001);
    EXPECT_TRUE(page.isWhole());
    EXPECT_EQ(page.format().heightPixels, 100001);
}

TEST_F(PageBufferTest, IsWholeWithFewerRowsButNeverWithMoreOrNone) {
    ASSERT_TRUE(page.begin(pageOf(10, 4, 8)));
    page.finish(0);
    EXPECT_FALSE(page.isWhole());
    page.finish(5);
    EXPECT_FALSE(page.isWhole());
    page.finish(3);
    EXPECT_TRUE(page.isWhole());
    EXPECT_EQ(page.format().heightPixels, 3);
    ASSERT_TRUE(page.begin(pageOf(10, 4, 8)));
    EXPECT_FALSE(page.isWhole());
}

TEST_F(PageBufferTest, ItsMemoryIsUsedAgainAndCannotShrink) {
    ASSERT_TRUE(page.begin(pageOf(100, 100, 24)));
    const int descriptor = page.descriptor();
    const uint8_t* start = page.rows(0, 1).data();
    ASSERT_TRUE(page.begin(pageOf(10, 10, 8)));
    EXPECT_EQ(page.descriptor(), descriptor);
    EXPECT_EQ(page.rows(0, 1).data(), start);
    EXPECT_NE(ftruncate(descriptor, 1), 0);
    struct stat information {};
    ASSERT_EQ(fstat(descriptor, &information), 0);
    EXPECT_EQ(information.st_size, 30000);
}

} // namespace
} // namespace paperline::sources
