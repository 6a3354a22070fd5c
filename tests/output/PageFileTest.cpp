#include "platform/files/PageFile.h"

#include "output/PageNaming.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/OtherFileSystem.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <set>
#include <vector>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

class PageFile : public testing::Test {
protected:
    void TearDown() override { (void)chmod(folder_.c_str(), 0700); }
    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    const testing_support::TestFolder testFolder_;
    const std::string& folder_ = testFolder_.path();
};

const Bytes page{1, 2, 3, 4};

TEST_F(PageFile, AUsersFileAppearsWhole) {
    const PageWrite write = writePageFile({path("a.jpg"), false, {}}, page);
    EXPECT_EQ(write.result, PageWriteResult::complete);
    EXPECT_EQ(write.path, path("a.jpg"));
    EXPECT_EQ(write.reason, "");
    EXPECT_EQ(readFile(path("a.jpg")), page);
}

TEST_F(PageFile, ATakenNameIsNeverOverwritten) {
    ASSERT_TRUE(writeFile(path("a.jpg"), Bytes{9}));
    const PageWrite write = writePageFile({path("a.jpg"), false, {}}, page);
    EXPECT_EQ(write.result, PageWriteResult::notOpened);
    EXPECT_EQ(write.reason, "File exists");
    EXPECT_EQ(readFile(path("a.jpg")), Bytes{9});
}

TEST_F(PageFile, ANameTakenMeanwhileMovesOnToTheNext) {
    ASSERT_TRUE(writeFile(path("p1"), Bytes{9}));
    ASSERT_TRUE(writeFile(path("p2"), Bytes{8}));
    int number = 1;
    const PageWrite write = writePageFile(
        {path("p1"), false, [&] { return path("p" + std::to_string(++number)); }}, page);
    EXPECT_EQ(write.result, PageWriteResult::complete);
    EXPECT_EQ(write.path, path("p3"));
    EXPECT_EQ(readFile(path("p1")), Bytes{9});
    EXPECT_EQ(readFile(path("p2")), Bytes{8});
    EXPECT_EQ(readFile(path("p3")), page);
}

TEST_F(PageFile, ALinkUnderTheNameIsACollisionEvenWhenItLeadsNowhere) {
    ASSERT_EQ(symlink(path("elsewhere").c_str(), path("a.jpg").c_str()), 0);
    const PageWrite write =
        writePageFile({path("a.jpg"), false, [&] { return path("b.jpg"); }}, page);
    EXPECT_EQ(write.path, path("b.jpg"));
    EXPECT_FALSE(fileExists(path("elsewhere")));
}

TEST_F(PageFile, ScratchFilesAreReplaced) {
    ASSERT_TRUE(writeFile(path("s"), Bytes{9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(writePageFile({path("s"), true, {}}, page).result, PageWriteResult::complete);
    EXPECT_EQ(readFile(path("s")), page);
}

TEST_F(PageFile, AVanishedFolderIsNotOpened) {
    for (const bool isScratch : {false, true}) {
        const PageWrite write = writePageFile({path("gone/a.jpg"), isScratch, {}}, page);
        EXPECT_EQ(write.result, PageWriteResult::notOpened);
        EXPECT_EQ(write.reason, "the folder is gone");
    }
}

TEST(FullDiskPage, IsIncompleteAndLeavesNothingUnderItsName) {
    const testing_support::SmallDisk disk(64);
    for (const bool isScratch : {false, true}) {
        const PageWrite write = writePageFile({disk / "a.jpg", isScratch, {}}, Bytes(200 * 1024));
        EXPECT_EQ(write.result, PageWriteResult::incomplete);
        EXPECT_EQ(write.reason, disk.fullText());
        EXPECT_EQ(folderEntries(disk.path()).empty(), !isScratch);
    }
}

// Runs in a child with a limit on file sizes, which makes writes fail as a full disk does.
int writeAboveLimit(const std::string& target) {
    const rlimit limit{4096, 4096};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
        return 2;
    (void)std::signal(SIGXFSZ, SIG_IGN);
    const PageWrite write = writePageFile({target, false, {}}, Bytes(100000));
    return write.result == PageWriteResult::incomplete ? 0 : 1;
}

TEST_F(PageFile, AWriteThatStopsHalfwayLeavesNoFile) {
    const pid_t child = fork();
    if (child == 0)
        _exit(writeAboveLimit(path("a.bmp")));
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(folderEntries(folder_).empty());
}

// A plain user; root passes every permission bit.
int writeAsPlainUser(const std::string& target) {
    constexpr uid_t plainUser = 65534;
    if (geteuid() == 0 && (setgid(plainUser) != 0 || setuid(plainUser) != 0))
        return 2;
    const PageWrite write = writePageFile({target, false, {}}, page);
    return write.result == PageWriteResult::notOpened && write.reason == "Permission denied" ? 0
                                                                                             : 1;
}

TEST_F(PageFile, AReadOnlyFolderIsNotOpened) {
    ASSERT_EQ(chmod(folder_.c_str(), 0555), 0);
    const pid_t child = fork();
    if (child == 0)
        _exit(writeAsPlainUser(path("a.jpg")));
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(folderEntries(folder_).empty());
}

// One writer's way through the dispatch: search, write, move on.
int savePages(const std::string& folder, uint8_t writer, int count) {
    uint32_t counter = 1;
    const PageNamePattern pattern{folder, "Image", ".jpg", false};
    const NameSearch search{.testCollisions = true, .fileExists = fileExists, .announce = {}};
    for (int i = 0; i < count; ++i) {
        const PageName name = findPageName(pattern, counter, search);
        counter = name.counter;
        const auto next = [&] {
            const PageName free = findPageName(pattern, counter + 1, search);
            counter = free.counter;
            return free.path;
        };
        const Bytes content{writer, static_cast<uint8_t>(i)};
        if (writePageFile({name.path, false, next}, content).result != PageWriteResult::complete)
            return 1;
        ++counter;
    }
    return 0;
}

TEST_F(PageFile, TwoProcessesInOneFolderLoseNothing) {
    constexpr int pages = 200;
    const pid_t child = fork();
    if (child == 0)
        _exit(savePages(folder_, 2, pages));
    EXPECT_EQ(savePages(folder_, 1, pages), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    std::set<Bytes> contents;
    for (const std::string& name : folderEntries(folder_))
        contents.insert(readFile(path(name)).value_or(Bytes{}));
    EXPECT_EQ(contents.size(), 2U * pages);
    EXPECT_EQ(folderEntries(folder_).size(), 2U * pages);
    EXPECT_TRUE(fileExists(path("Image_00400.jpg")));
}

} // namespace
} // namespace paperline
