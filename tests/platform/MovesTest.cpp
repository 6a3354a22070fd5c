// Moves and full or read-only disks: what must hold when the file system does not play along.
#include "platform/files/Files.h"
#include "platform/files/NewFile.h"

#include "platform/files/FileContent.h"
#include "tests/support/FileTesting.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace paperline {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using namespace testing_support;

TEST(Moving, RenamesWithinAFileSystem) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "from", "content"));
    EXPECT_TRUE(moveFile(folder / "from", folder / "to"));
    EXPECT_EQ(textOf(folder / "to"), "content");
    EXPECT_THAT(folderEntries(folder.path()), ElementsAre("to"));
}

TEST(Moving, NeverReplaces) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "from", "new"));
    ASSERT_TRUE(put(folder / "to", "old"));
    EXPECT_FALSE(moveFile(folder / "from", folder / "to"));
    EXPECT_FALSE(moveFile(folder / "from", folder / "from"));
    ASSERT_EQ(::symlink("nothing", (folder / "dangling").c_str()), 0);
    EXPECT_FALSE(moveFile(folder / "from", folder / "dangling"));
    EXPECT_EQ(textOf(folder / "from"), "new");
    EXPECT_EQ(textOf(folder / "to"), "old");
    EXPECT_FALSE(fileExists(folder / "nothing"));
}

TEST(Moving, ReportsWhatCannotBeMoved) {
    const TestFolder folder;
    EXPECT_FALSE(moveFile(folder / "missing", folder / "to"));
    ASSERT_TRUE(put(folder / "from", "content"));
    EXPECT_FALSE(moveFile(folder / "from", folder / "missing/to"));
    EXPECT_EQ(textOf(folder / "from"), "content");
}

TEST(Moving, SetsErrno) {
    const TestFolder folder;
    const OtherFileSystem other(deviceOf(folder.path()));
    for (const std::string& from : {folder / "from", other / "from"}) {
        ASSERT_TRUE(put(from, "content"));
        errno = 0;
        EXPECT_FALSE(moveFile(from, folder / "missing/to"));
        EXPECT_EQ(errno, ENOENT);
        ASSERT_TRUE(put(folder / "taken", "old"));
        EXPECT_FALSE(moveFile(from, folder / "taken"));
        EXPECT_EQ(errno, EEXIST);
    }
}

TEST(Moving, CopiesAcrossFileSystems) {
    const TestFolder folder;
    const OtherFileSystem other(deviceOf(folder.path()));
    ASSERT_TRUE(put(other / "from", "content"));
    EXPECT_TRUE(moveFile(other / "from", folder / "to"));
    EXPECT_EQ(textOf(folder / "to"), "content");
    EXPECT_THAT(folderEntries(other.path()), IsEmpty());

    ASSERT_TRUE(put(other / "from", "next"));
    EXPECT_FALSE(moveFile(other / "from", folder / "to"));
    EXPECT_EQ(textOf(folder / "to"), "content");
    EXPECT_EQ(textOf(other / "from"), "next");
}

TEST(Moving, RefusesALinkAcrossFileSystems) {
    const TestFolder folder;
    const OtherFileSystem other(deviceOf(folder.path()));
    ASSERT_TRUE(put(other / "file", "content"));
    ASSERT_EQ(::symlink("file", (other / "link").c_str()), 0);
    EXPECT_FALSE(moveFile(other / "link", folder / "to"));
    EXPECT_THAT(folderEntries(folder.path()), IsEmpty());
}

TEST(MovingScratch, MovesLikeAnyFile) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "from", "content"));
    EXPECT_TRUE(moveScratchFile(folder / "from", folder / "to"));
    EXPECT_FALSE(moveScratchFile(folder / "from", folder / "missing"));
    ASSERT_TRUE(put(folder / "next", "next"));
    EXPECT_FALSE(moveScratchFile(folder / "next", folder / "to"));
    EXPECT_EQ(textOf(folder / "to"), "content");
    const OtherFileSystem other(deviceOf(folder.path()));
    EXPECT_TRUE(moveScratchFile(folder / "to", other / "far"));
    EXPECT_EQ(textOf(other / "far"), "content");
    EXPECT_THAT(folderEntries(folder.path()), ElementsAre("next"));
}

TEST(Linking, GivesASecondNameThatOutlivesTheFirst) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "first", "content"));
    EXPECT_TRUE(linkOrCopyFile(folder / "first", folder / "second"));
    struct stat status = {};
    ASSERT_EQ(::stat((folder / "second").c_str(), &status), 0);
    EXPECT_EQ(status.st_nlink, 2U);
    EXPECT_TRUE(removePath(folder / "first"));
    EXPECT_EQ(textOf(folder / "second"), "content");
}

TEST(Linking, CopiesAcrossFileSystems) {
    const TestFolder folder;
    const OtherFileSystem other(deviceOf(folder.path()));
    ASSERT_TRUE(put(folder / "from", "content"));
    EXPECT_TRUE(linkOrCopyFile(folder / "from", other / "to"));
    EXPECT_EQ(textOf(other / "to"), "content");
    ASSERT_TRUE(put(other / "to", "changed"));
    EXPECT_EQ(textOf(folder / "from"), "content");
}

TEST(Linking, TakesTheContentBehindALink) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "content"));
    ASSERT_EQ(::symlink("file", (folder / "link").c_str()), 0);
    EXPECT_TRUE(linkOrCopyFile(folder / "link", folder / "to"));
    EXPECT_TRUE(removePath(folder / "file"));
    EXPECT_EQ(textOf(folder / "to"), "content");
}

TEST(Linking, NeverReplacesAndReportsFailures) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "from", "new"));
    ASSERT_TRUE(put(folder / "to", "old"));
    EXPECT_FALSE(linkOrCopyFile(folder / "from", folder / "to"));
    EXPECT_EQ(textOf(folder / "to"), "old");
    EXPECT_FALSE(linkOrCopyFile(folder / "gone", folder / "new"));
    EXPECT_FALSE(linkOrCopyFile(folder.path(), folder / "new"));
    EXPECT_FALSE(linkOrCopyFile(folder / "from", folder / "missing/new"));
    EXPECT_FALSE(linkOrCopyFile(folder / "from", "/proc/self/new"));
    EXPECT_FALSE(fileExists(folder / "new"));
}

TEST(FullDisk, LeavesNothingBehind) {
    const TestFolder folder;
    const SmallDisk disk(64);
    const std::vector<uint8_t> large(200 * 1024, 'x');
    EXPECT_EQ(createFileWhole(disk / "page", large), CreateResult::failed);
    EXPECT_THAT(folderEntries(disk.path()), IsEmpty());
    // The room is there again.
    EXPECT_EQ(createFileWhole(disk / "small", bytesOf("x")), CreateResult::created);
    EXPECT_FALSE(writeFile(disk / "plain", large));
}

TEST(FullDisk, KeepsTheOldSettings) {
    const SmallDisk disk(64);
    ASSERT_TRUE(put(disk / "settings", "old"));
    EXPECT_FALSE(writeFileAtomically(disk / "settings", std::vector<uint8_t>(200 * 1024, 'x')));
    EXPECT_EQ(textOf(disk / "settings"), "old");
    EXPECT_THAT(folderEntries(disk.path()), ElementsAre("settings"));
}

TEST(FullDisk, KeepsTheSourceOfAMoveAndACopy) {
    const TestFolder folder;
    const std::string source = folder / "from";
    ASSERT_TRUE(writeFile(source, std::vector<uint8_t>(200 * 1024, 'x')));
    const SmallDisk disk(64);
    EXPECT_FALSE(copyFile(source, disk / "to"));
    if (deviceOf(disk.path()) != deviceOf(folder.path())) {
        EXPECT_FALSE(moveFile(source, disk / "to"));
    }
    EXPECT_THAT(folderEntries(disk.path()), IsEmpty());
    EXPECT_EQ(textOf(source).size(), 200U * 1024U);
}

TEST(ReadOnlyFolder, TakesNothing) {
    // /proc/self refuses new names to everyone, root included.
    EXPECT_EQ(createFileWhole("/proc/self/page", bytesOf("x")), CreateResult::notOpened);
    EXPECT_FALSE(writeFileAtomically("/proc/self/settings", bytesOf("x")));
    EXPECT_FALSE(createFolder("/proc/self/folder"));
    EXPECT_FALSE(createPrivateFolder("/proc/self/folder"));
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "from", "content"));
    EXPECT_FALSE(moveFile(folder / "from", "/proc/self/to"));
    EXPECT_FALSE(copyFile(folder / "from", "/proc/self/to"));
    EXPECT_EQ(textOf(folder / "from"), "content");
}

TEST(NewFile, WorksUnderAHiddenNameToo) {
    const TestFolder folder;
    {
        NewFile file(folder / "page", NewFile::Named{});
        ASSERT_TRUE(file.isOpen());
        ASSERT_TRUE(writeAll(file.descriptor(), bytesOf("content")));
        ASSERT_EQ(folderEntries(folder.path()).size(), 1U);
        EXPECT_FALSE(fileExists(folder / "page"));
        EXPECT_EQ(file.publish(), 0);
    }
    EXPECT_EQ(textOf(folder / "page"), "content");
    {
        NewFile file(folder / "page", NewFile::Named{});
        EXPECT_EQ(file.publish(), EEXIST);
    }
    EXPECT_EQ(textOf(folder / "page"), "content");
    EXPECT_THAT(folderEntries(folder.path()), ElementsAre("page"));
}

TEST(NewFile, DisappearsWhenItIsNotPublished) {
    const TestFolder folder;
    {
        NewFile unnamed(folder / "a");
        NewFile named(folder / "b", NewFile::Named{});
        ASSERT_TRUE(unnamed.isOpen() && named.isOpen());
    }
    EXPECT_THAT(folderEntries(folder.path()), IsEmpty());
}

TEST(Renaming, RefusesATakenName) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "a", "a"));
    ASSERT_TRUE(put(folder / "b", "b"));
    EXPECT_EQ(renameWithoutReplacing(folder / "a", folder / "b"), EEXIST);
    EXPECT_EQ(renameWithoutReplacing(folder / "a", folder / "c"), 0);
    EXPECT_EQ(renameWithoutReplacing(folder / "a", folder / "d"), ENOENT);
    EXPECT_THAT(folderEntries(folder.path()), UnorderedElementsAre("b", "c"));
}

} // namespace
} // namespace paperline
